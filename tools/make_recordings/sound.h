// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

namespace recordings {

inline constexpr double kSampleRateHz = 96000.0;
inline constexpr double kPi = 3.14159265358979323846;

// An exponential decay falls by 60 dB in this many time constants: ln(1000).
inline constexpr double kTimeConstantsPerT60 = 6.907755278982137;

using Signal = std::vector<double>; // one channel, full scale 1.0

// A stereo sound as mid and side: left = mid + side, right = mid - side. The side is
// always quieter than the mid, and mono playback loses only the side.
struct Sound {
    explicit Sound(std::size_t frames) : mid(frames), side(frames) {}

    Signal mid;
    Signal side;
};

inline std::size_t framesIn(double ms) noexcept {
    return static_cast<std::size_t>(std::lround(ms * kSampleRateHz / 1000.0));
}

inline double gainFromDb(double levelDb) noexcept {
    return std::pow(10.0, levelDb / 20.0);
}

// Adds gain * source to target from startFrame on; frames past the end of target are dropped.
void addScaled(Signal& target, const Signal& source, double gain, std::size_t startFrame = 0);
void addScaled(Sound& target, const Sound& source, double gain, std::size_t startFrame = 0);

// Scales the signal to rms 1, so that a mixing gain does not depend on the filters before
// it. No-op for silence.
void scaleToUnitRms(Signal& signal) noexcept;

} // namespace recordings
