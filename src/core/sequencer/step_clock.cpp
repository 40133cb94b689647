// SPDX-License-Identifier: MIT
#include "sequencer/step_clock.h"

#include "clock_thread.h"
#include "system_time.h"

#include <algorithm>

namespace percussomatic {

namespace {

void pushDeadline(StepClock& clock, std::int64_t deadline) {
    if (clock.deadlineCount < clock.deadlines.size()) {
        clock.deadlines[clock.deadlineCount++] = deadline;
    }
}

// No-op if the deadline is not the last one: the clock has been stopped since.
void dropDeadline(StepClock& clock, std::int64_t deadline) {
    if (clock.deadlineCount > 0 && clock.deadlines[clock.deadlineCount - 1] == deadline) {
        --clock.deadlineCount;
    }
}

// Posts ticks until the clock is stopped. The lock is held except while waiting and posting.
void postTicks(StepClock& clock, std::unique_lock<std::mutex>& lock) {
    const std::uint32_t stops = clock.stops;
    const auto ticking = [&] { return clock.clockRunning && clock.stops == stops && !clock.quit; };

    std::int64_t base = clock.startNs;
    while (ticking()) {
        const double intervalNs = stepIntervalNs(clock.clockBpm);
        const std::int64_t deadline = base + static_cast<std::int64_t>(intervalNs);
        for (;;) {
            const std::int64_t remainingNs = deadline - counterNs();
            if (remainingNs <= 0) {
                break;
            }
            waitForWake(lock, remainingNs);
            if (!ticking()) {
                return;
            }
        }
        const WindowHandle window = clock.window;
        pushDeadline(clock, deadline);
        lock.unlock();
        const bool posted = postStepTick(window);
        lock.lock();
        if (!posted) {
            dropDeadline(clock, deadline);
        }
        const std::int64_t now = counterNs();
        clock.dropped += droppedSteps(now, deadline, intervalNs) + (posted ? 0 : 1);
        base = nextGridBaseNs(now, deadline, intervalNs);
    }
}

void clockThread(StepClock& clock) {
    beginClockThread();
    std::unique_lock lock(clock.mutex);
    while (!clock.quit) {
        if (clock.clockRunning) {
            postTicks(clock, lock);
        } else {
            waitForWake(lock);
        }
    }
    lock.unlock();
    endClockThread();
}

} // namespace

StepClock& stepClock() noexcept {
    static StepClock clock;
    return clock;
}

double stepIntervalNs(double tempoBpm) noexcept {
    constexpr double kStepsPerBeat = 4.0;
    return 60.0 / (std::max(1.0, tempoBpm) * kStepsPerBeat) * 1e9;
}

std::int64_t nextGridBaseNs(std::int64_t now, std::int64_t deadline, double intervalNs) noexcept {
    return static_cast<double>(now - deadline) > intervalNs ? now : deadline;
}

std::uint32_t droppedSteps(std::int64_t now, std::int64_t deadline, double intervalNs) noexcept {
    const auto lateNs = static_cast<double>(now - deadline);
    return lateNs > intervalNs ? static_cast<std::uint32_t>(lateNs / intervalNs) : 0;
}

std::int64_t waitMilliseconds(std::int64_t remainingNs) noexcept {
    constexpr std::int64_t kNsPerMs = 1'000'000, kDayMs = 86'400'000;
    const std::int64_t wholeMs = remainingNs / kNsPerMs;
    return std::min(remainingNs % kNsPerMs > 0 ? wholeMs + 1 : wholeMs, kDayMs);
}

void setClockWindow(WindowHandle window) {
    const std::lock_guard lock(stepClock().mutex);
    stepClock().window = window;
}

void runClock(double tempoBpm, std::int64_t startNs) {
    StepClock& clock = stepClock();
    {
        const std::lock_guard lock(clock.mutex);
        clock.clockBpm = tempoBpm;
        clock.startNs = startNs;
        clock.clockRunning = true;
        if (!clock.thread.joinable()) {
            clock.quit = false;
            clock.thread = std::thread([&clock] { clockThread(clock); });
        }
    }
    wakeClock();
}

void setClockTempo(double tempoBpm) {
    const std::lock_guard lock(stepClock().mutex);
    stepClock().clockBpm = tempoBpm;
}

std::optional<std::int64_t> takeDeadline() {
    StepClock& clock = stepClock();
    const std::lock_guard lock(clock.mutex);
    if (clock.deadlineCount == 0) {
        return std::nullopt;
    }
    const std::int64_t first = clock.deadlines[0];
    std::move(clock.deadlines.begin() + 1, clock.deadlines.begin() + clock.deadlineCount,
              clock.deadlines.begin());
    --clock.deadlineCount;
    return first;
}

std::uint32_t droppedStepCount() {
    const std::lock_guard lock(stepClock().mutex);
    return stepClock().dropped;
}

void clockStop() {
    StepClock& clock = stepClock();
    {
        const std::lock_guard lock(clock.mutex);
        clock.clockRunning = false;
        clock.deadlineCount = 0;
        ++clock.stops;
    }
    wakeClock();
}

void clockShutdown() {
    StepClock& clock = stepClock();
    {
        const std::lock_guard lock(clock.mutex);
        clock.clockRunning = false;
        clock.quit = true;
    }
    wakeClock();
    if (clock.thread.joinable()) {
        clock.thread.join();
    }
}

} // namespace percussomatic
