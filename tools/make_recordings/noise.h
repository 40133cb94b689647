// SPDX-License-Identifier: MIT
#pragma once

#include "envelopes.h"
#include "filters.h"
#include "sound.h"
#include <cstdint>
#include <vector>

namespace recordings {

// Uniform white noise: a 64-bit counter passed through a mixing function (SplitMix64).
// Not <random>, because its distributions differ between standard libraries.
class Noise {
public:
    explicit Noise(std::uint64_t seed) noexcept : state_(seed) {}

    double next() noexcept; // -1..1

    // Approximately normal: standard deviation 1, range -3..3.
    double nextNormal() noexcept { return next() + next() + next(); }

private:
    std::uint64_t state_;
};

Signal whiteNoise(std::size_t frames, std::uint64_t seed);

// A burst of filtered noise. Mid and side get independent noise with the same spectrum,
// as a pair of microphones would pick up.
struct NoiseBurst {
    std::uint64_t seed; // of the mid; the side derives its own
    std::vector<FilterStage> filters;
    std::vector<Decay> decays;
    double gain;
    double sideGain; // of the side, relative to gain
};

void addNoise(Sound& target, const NoiseBurst& burst);

} // namespace recordings
