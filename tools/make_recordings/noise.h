#pragma once

#include "envelopes.h"
#include "filters.h"
#include "sound.h"
#include <cstdint>
#include <vector>

namespace recordings {

// Uniform white noise from a 64-bit counter and a mixing function. The standard
// library's distributions differ between compilers; this does not.
class Noise {
public:
    explicit Noise(std::uint64_t seed) noexcept : state_(seed) {}

    double next() noexcept; // -1..1

    // Roughly normal, standard deviation 1, never beyond 3.
    double nextNormal() noexcept { return next() + next() + next(); }

private:
    std::uint64_t state_;
};

Signal whiteNoise(std::size_t frames, std::uint64_t seed);

// A burst of filtered noise. Mid and side are different noise of the same colour, as
// a room or a pair of microphones would have it.
struct NoiseBurst {
    std::uint64_t seed; // of the mid; the side derives its own
    std::vector<FilterStage> filters;
    std::vector<Decay> decays;
    double gain;
    double sideGain; // of the side, as a factor on gain
};

void addNoise(Sound& target, const NoiseBurst& burst);

} // namespace recordings
