#include "metal_bands.h"

#include "noise.h"

namespace recordings {
namespace {

void addIngredient(Signal& target, Signal source, const std::vector<FilterStage>& filters,
                   double gain) {
    if (gain == 0.0) {
        return;
    }
    filter(source, filters);
    scaleToUnitRms(source);
    addScaled(target, source, gain);
}

} // namespace

void addBand(Signal& target, const Band& band, const Signal& metal, std::uint64_t seed) {
    Signal mix(target.size());
    addIngredient(mix, metal, band.metalFilters, band.metalGain);
    addIngredient(mix, whiteNoise(target.size(), seed), band.noiseFilters, band.noiseGain);
    filter(mix, band.filters);
    shape(mix, band.decays);
    addScaled(target, mix, band.gain);
}

void addBands(Sound& sound, const Cymbal& cymbal) {
    constexpr double kSideSharp = 1.0237;
    constexpr double kSideGain = 0.38;
    constexpr std::uint64_t kSideSeeds = 50; // clear of the bands' own seeds

    const std::size_t frames = sound.mid.size();
    const Signal metal = metalBank(cymbal.tuning, cymbal.ringGain, frames);
    const Signal sideMetal = metalBank(scaled(cymbal.tuning, kSideSharp), cymbal.ringGain, frames);
    Signal side(frames);
    std::uint64_t seed = cymbal.seed;
    for (const Band& band : cymbal.bands) {
        addBand(sound.mid, band, metal, seed);
        addBand(side, band, sideMetal, seed + kSideSeeds);
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
