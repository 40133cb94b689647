// SPDX-License-Identifier: MIT
// A rhythm's pattern of steps, its length and its tempo range.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace percussomatic {

inline constexpr int kLineCount = 6;  // rhythm lines
inline constexpr int kStepCount = 16; // steps per line, sixteenth notes

// Numbers of steps after which a rhythm can repeat; the panel has one switch for each.
inline constexpr std::array<std::uint32_t, 7> kSequenceLengths{5, 6, 9, 10, 12, 15, 16};
inline constexpr std::uint32_t kFullLength = 16;

// The length itself if the panel has a switch for it, otherwise 16.
constexpr std::uint32_t supportedLength(std::uint32_t length) noexcept {
    return std::ranges::find(kSequenceLengths, length) != kSequenceLengths.end() ? length
                                                                                 : kFullLength;
}

// Beats (quarter notes) per minute of the internal clock.
inline constexpr double kMinBpm = 40.0, kMaxBpm = 240.0;

// Position of the tempo rotary: t in 0..1 corresponds to kMinBpm..kMaxBpm.
constexpr double rotaryToBpm(double t) noexcept {
    return t * (kMaxBpm - kMinBpm) + kMinBpm;
}
constexpr double bpmToRotary(double bpm) noexcept { // clamped to 0..1
    return std::clamp((bpm - kMinBpm) / (kMaxBpm - kMinBpm), 0.0, 1.0);
}

// The set steps of all lines. Lines are 0..5, steps 0..15.
struct Pattern {
    std::array<std::uint8_t, kLineCount * kStepCount> steps{}; // line by line; 0 = off, 1 = on

    bool isSet(int line, int step) const noexcept { return steps[indexOf(line, step)] != 0; }
    void set(int line, int step, bool on) noexcept { steps[indexOf(line, step)] = on ? 1 : 0; }
    bool operator==(const Pattern&) const = default;

private:
    static constexpr std::size_t indexOf(int line, int step) noexcept {
        return static_cast<std::size_t>(line * kStepCount + step);
    }
};

} // namespace percussomatic
