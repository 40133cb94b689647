// Charleston and cymbals: a bank of metal through band-passes, each with its own
// decay. One envelope for all bands would be a gate on hiss; what makes it metal is
// that the top dies first while the middle is still building up.

#include "metal_bank.h"
#include "noise.h"
#include "struck_resonator.h"
#include "voices.h"

#include <array>

namespace recordings {
namespace {

constexpr BankTuning kCharlestonTuning = {318.7, 437.3, 541.9, 664.1, 783.7, 951.3};
constexpr BankTuning kRideTuning = {331.1, 409.7, 563.3, 617.9, 811.3, 1013.9};

BankTuning scaled(BankTuning tuning, double factor) noexcept {
    for (double& hz : tuning) {
        hz *= factor;
    }
    return tuning;
}

// What one band is made of: metal and noise, each brought to rms 1 behind its own
// filters, mixed, filtered together, then shaped. The middle band's high-pass keeps
// the bank's fundamentals out: they are so strong that its skirt alone would not.
struct Band {
    std::vector<FilterStage> metalFilters = {};
    double metalGain = 1.0;
    std::vector<FilterStage> noiseFilters = {};
    double noiseGain = 0.0;
    std::vector<FilterStage> filters = {};
    double gain = 1.0;
    std::vector<Decay> decays = {};
};

void addIngredient(Signal& target, Signal source, const std::vector<FilterStage>& filters,
                   double gain) {
    if (gain == 0.0) {
        return;
    }
    filter(source, filters);
    scaleToUnitRms(source);
    addScaled(target, source, gain);
}

void addBand(Signal& target, const Band& band, const Signal& metal, std::uint64_t seed) {
    Signal mix(target.size());
    addIngredient(mix, metal, band.metalFilters, band.metalGain);
    addIngredient(mix, whiteNoise(target.size(), seed), band.noiseFilters, band.noiseGain);
    filter(mix, band.filters);
    shape(mix, band.decays);
    addScaled(target, mix, band.gain);
}

struct Cymbal {
    BankTuning tuning;
    double ringGain;
    std::vector<Band> bands;
    std::uint64_t seed;
};

// The side is the same cymbal seen from another spot: its bank a little sharper,
// other noise.
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

// Struck modes spread evenly in pitch, none quite in its place: the plate under the
// wash, and what keeps the tail from turning into steady oscillators.
void addPlateModes(Sound& sound, double t60Ms, std::uint64_t seed) {
    constexpr int kModes = 26;
    constexpr double kLowestHz = 430.0;
    constexpr double kHighestHz = 6600.0;
    constexpr double kGain = 0.055;
    constexpr double kStickMs = 0.25;

    Noise chance(seed);
    const double step = std::log(kHighestHz / kLowestHz) / (kModes - 1);
    for (int index = 0; index < kModes; ++index) {
        const double hz = kLowestHz * std::exp(step * (index + 0.35 * chance.next()));
        double gain = kGain * (1.0 + 0.4 * chance.next());
        if (hz > 600.0 && hz < 1100.0) {
            gain *= 1.5; // a real plate is loudest here in its first 20 ms
        }
        double decay = t60Ms;
        if (hz < 1500.0) {
            decay *= 0.75;
        } else if (hz > 5000.0) {
            decay *= 0.62;
        }
        strike(sound, kStickMs, {hz, gain, decay}, {0.0, 0.4 * chance.next()});
    }
}

void addStick(Sound& sound, double gain, std::uint64_t seed) {
    addNoise(sound, {.seed = seed,
                     .filters = {bandPass(3500.0, 0.8)},
                     .decays = {{1.0, 0.6, 30.0}},
                     .gain = gain,
                     .sideGain = 0.3});
}

} // namespace

Sound charleston(std::size_t frames) {
    Sound sound(frames);
    const std::vector<Decay> snap = {{0.66, 0.6, 70.0}, {0.34, 1.5, 260.0}};
    const std::vector<FilterStage> hiss = {steepHighPass(6800.0), lowPass(14000.0)};
    const Band metal = {.metalFilters = {steepHighPass(6200.0), bandPass(8600.0, 0.45)},
                        .metalGain = 0.85,
                        .noiseFilters = hiss,
                        .noiseGain = 0.52,
                        .decays = snap};
    Band air = metal;
    air.metalGain = 0.0; // two closed plates ring as one: only their hiss is wide
    air.noiseGain = 0.26;
    addBand(sound.mid, metal, metalBank(kCharlestonTuning, 0.8, frames), 601);
    addBand(sound.side, air, Signal(), 602);
    return sound;
}

Sound crashCymbal(std::size_t frames) {
    Sound sound(frames);
    const Band low = {
        .metalFilters = {bandPass(1150.0, 1.1)}, .gain = 0.14, .decays = {{1.0, 3.0, 1900.0}}};
    const Band middle = {.metalFilters = {highPass(1500.0), bandPass(3900.0, 0.75)},
                         .metalGain = 0.95,
                         .noiseFilters = {bandPass(4400.0, 0.75)},
                         .noiseGain = 0.36,
                         .gain = 0.52,
                         .decays = bent({{1.0, 4.0, 3300.0}}, -0.65, 70.0)};
    const Band high = {.metalFilters = {steepHighPass(6800.0)},
                       .metalGain = 0.90,
                       .noiseFilters = {steepHighPass(7200.0)},
                       .noiseGain = 0.48,
                       .filters = {lowPass(15500.0)},
                       .gain = 0.70,
                       .decays = bent({{0.55, 1.0, 1700.0}, {0.45, 1.0, 510.0}}, 2.6, 35.0)};
    addBands(sound, {kCharlestonTuning, 0.45, {low, middle, high}, 610});
    addPlateModes(sound, 3400.0, 620);
    addStick(sound, 0.8, 621);
    return sound;
}

Sound rideCymbal(std::size_t frames) {
    constexpr double kHigher = 1.27; // a smaller plate than the crash
    constexpr double kTipMs = 0.18;
    constexpr auto kPing = std::to_array<Mode>({
        {2873.0, 0.210, 900.0},
        {3461.0, 0.336, 830.0},
        {4297.0, 0.420, 760.0},
        {5189.0, 0.315, 690.0},
        {6420.0, 0.210, 620.0},
        {7710.0, 0.147, 550.0},
    });

    Sound sound(frames);
    const Band low = {.metalFilters = {bandPass(kHigher * 1150.0, 1.1)},
                      .gain = 0.05,
                      .decays = {{1.0, 3.0, 800.0}}};
    const Band middle = {
        .metalFilters = {highPass(kHigher * 1500.0), bandPass(kHigher * 3900.0, 0.75)},
        .metalGain = 0.95,
        .noiseFilters = {bandPass(kHigher * 4400.0, 0.75)},
        .noiseGain = 0.36,
        .gain = 0.28,
        .decays = bent({{1.0, 4.0, 1500.0}}, -0.65, 30.0)};
    const Band high = {.metalFilters = {steepHighPass(6800.0)},
                       .metalGain = 0.90,
                       .noiseFilters = {steepHighPass(7200.0)},
                       .noiseGain = 0.48,
                       .filters = {lowPass(15500.0)},
                       .gain = 0.50,
                       .decays = bent({{0.55, 1.0, 1150.0}, {0.45, 1.0, 345.0}}, 1.6, 35.0)};
    addBands(sound, {scaled(kRideTuning, kHigher), 0.45, {low, middle, high}, 630});
    addPlateModes(sound, 1500.0, 640);
    double lean = 0.2; // alternate modes to either side
    for (const Mode& mode : kPing) {
        strike(sound, kTipMs, mode, {0.0, lean});
        lean = -lean;
    }
    addStick(sound, 1.2, 641);
    return sound;
}

} // namespace recordings
