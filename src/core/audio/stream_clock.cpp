// SPDX-License-Identifier: MIT
#include "audio/stream_clock.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace percussomatic {

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;

// 48000 frames per second as a reduced fraction, so that products do not overflow within a century.
constexpr std::int64_t kDivisor = std::gcd<std::int64_t, std::int64_t>(kDeviceRateHz, kNsPerSecond);
constexpr std::int64_t kFrames = kDeviceRateHz / kDivisor, kNs = kNsPerSecond / kDivisor;

constexpr int kWindowBlocks = 64; // 0.7 s

// Devices take whole periods of up to 10 ms, which is why the earliest block of a window can still
// be late by a fraction of a block.
constexpr std::int64_t kToleranceNs = 1'000'000;
constexpr std::int64_t kCorrectedPart = 4; // corrects a quarter of a deviation per window
constexpr std::int64_t kMinJumpNs =
    8'000'000; // drift stays below that, a gap in the sound exceeds it

// More than the device's buffers hold: it has stood still, or the computer has slept.
constexpr std::int64_t kMaxLateNs = 50'000'000;

// Before its due time a block is never rendered, hence a block in advance.
constexpr std::int64_t kTriggerDelayNs = kDeviceBufferFrames * kNs / kFrames + kTriggerReserveNs;

constexpr std::int64_t floorDivide(std::int64_t dividend, std::int64_t divisor) noexcept {
    const std::int64_t quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

constexpr std::int64_t nearestFrame(std::int64_t ns) noexcept {
    return floorDivide(ns * kFrames + kNs / 2, kNs);
}

constexpr std::int64_t nsOfFrame(std::int64_t frame) noexcept {
    return floorDivide(frame * kNs, kFrames);
}

void correct(StreamClock& clock) noexcept {
    const std::int64_t deviation = clock.earliestNs;
    if (!clock.locked) {
        clock.locked = true;
        clock.originNs += deviation;
    } else if (std::abs(deviation) >= kMinJumpNs) {
        clock.nextFrame += nearestFrame(deviation);
        clock.pendingFrames = 0;
    } else {
        clock.pendingFrames =
            std::abs(deviation) > kToleranceNs ? nearestFrame(deviation / kCorrectedPart) : 0;
    }
}

} // namespace

std::int64_t frameOfDueTime(std::int64_t originNs, std::int64_t dueNs) noexcept {
    return nearestFrame(dueNs - originNs);
}

std::optional<StreamPosition> nextBlock(StreamClock& clock, std::int64_t nowNs,
                                        std::uint32_t frames) noexcept {
    const auto lateness = [&] { return nowNs - (clock.originNs + nsOfFrame(clock.nextFrame)); };
    if (clock.nextFrame == 0 || std::abs(lateness()) > kMaxLateNs) {
        clock = {.originNs = nowNs};
    }
    const std::int64_t lateNs = lateness();
    clock.earliestNs = clock.blocks == 0 ? lateNs : std::min(clock.earliestNs, lateNs);
    if (++clock.blocks == kWindowBlocks) {
        correct(clock);
        clock.blocks = 0;
    }
    const std::int64_t step = std::clamp<std::int64_t>(clock.pendingFrames, -1, 1);
    clock.pendingFrames -= step;
    clock.nextFrame += step;
    const StreamPosition position{clock.originNs - kTriggerDelayNs, clock.nextFrame};
    clock.nextFrame += frames;
    return clock.locked ? std::optional(position) : std::nullopt;
}

} // namespace percussomatic
