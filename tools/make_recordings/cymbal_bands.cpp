// SPDX-License-Identifier: MIT
#include "cymbal_bands.h"

#include "noise.h"

namespace recordings {
namespace {

void addFilteredSource(Signal& target, Signal source, const std::vector<FilterStage>& filters,
                       double gain) {
    if (gain == 0.0) {
        return;
    }
    filter(source, filters);
    scaleToUnitRms(source);
    addScaled(target, source, gain);
}

} // namespace

void addBand(Signal& target, const Band& band, const Signal& bank, std::uint64_t seed) {
    Signal mix(target.size());
    addFilteredSource(mix, bank, band.bankFilters, band.bankGain);
    addFilteredSource(mix, whiteNoise(target.size(), seed), band.noiseFilters, band.noiseGain);
    filter(mix, band.filters);
    applyEnvelope(mix, band.decays);
    addScaled(target, mix, band.gain);
}

void addBands(Sound& sound, const Cymbal& cymbal) {
    constexpr double kSidePitchRatio = 1.0237;
    constexpr double kSideGain = 0.38;
    constexpr std::uint64_t kSideSeedOffset = 50; // far from the seeds of the mid's bands

    const std::size_t frames = sound.mid.size();
    const Signal bank = oscillatorBank(cymbal.tuning, cymbal.ringModGain, frames);
    const Signal sideBank =
        oscillatorBank(scaled(cymbal.tuning, kSidePitchRatio), cymbal.ringModGain, frames);
    Signal side(frames);
    std::uint64_t seed = cymbal.seed;
    for (const Band& band : cymbal.bands) {
        addBand(sound.mid, band, bank, seed);
        addBand(side, band, sideBank, seed + kSideSeedOffset);
        ++seed;
    }
    addScaled(sound.side, side, kSideGain);
}

BankTuning scaled(BankTuning tuning, double factor) noexcept {
    for (double& hz : tuning) {
        hz *= factor;
    }
    return tuning;
}

} // namespace recordings
