// SPDX-License-Identifier: MIT
#include "noise.h"

namespace recordings {
namespace {

constexpr std::uint64_t kSideSeed = 0x5349444553494445ULL; // makes mid and side independent

void addChannel(Signal& target, const NoiseBurst& burst, std::uint64_t seed, double gain) {
    if (gain == 0.0) {
        return;
    }
    Signal noise = whiteNoise(target.size(), seed);
    filter(noise, burst.filters);
    applyEnvelope(noise, burst.decays);
    addScaled(target, noise, gain);
}

} // namespace

double Noise::next() noexcept {
    state_ += 0x9e3779b97f4a7c15ULL; // 2^64 divided by the golden ratio
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9ULL;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebULL;
    mixed ^= mixed >> 31;
    return static_cast<double>(mixed >> 11) * 0x1.0p-52 - 1.0; // exact: 53 bits
}

Signal whiteNoise(std::size_t frames, std::uint64_t seed) {
    Noise noise(seed);
    Signal signal(frames);
    for (double& sample : signal) {
        sample = noise.next();
    }
    return signal;
}

void addNoise(Sound& target, const NoiseBurst& burst) {
    addChannel(target.mid, burst, burst.seed, burst.gain);
    addChannel(target.side, burst, burst.seed ^ kSideSeed, burst.gain * burst.sideGain);
}

} // namespace recordings
