// SPDX-License-Identifier: MIT
// Charleston (hi-hat) and cymbals: an oscillator bank through band-passes, each with
// its own envelope, as in analogue circuits that build a cymbal from square waves
// (Werner, Abel and Smith, ICMC/SMC 2014). With one envelope for all bands the result
// would sound like gated hiss. It sounds metallic because the high band decays first,
// while the middle band is still building up.

#include "cymbal_bands.h"
#include "noise.h"
#include "struck_resonator.h"
#include "voices.h"

#include <array>

namespace recordings {
namespace {

constexpr BankTuning kCharlestonTuning = {318.7, 437.3, 541.9, 664.1, 783.7, 951.3};
constexpr BankTuning kRideTuning = {331.1, 409.7, 563.3, 617.9, 811.3, 1013.9};

// Adds the individual modes of a plate, each with its own decay time (Ducceschi, Touzé
// and Bilbao, Stockholm Music Acoustics Conference 2013). Without them the tail would
// be six steady oscillators. A thin plate has about the same number of modes in every
// kilohertz, so they are spaced evenly in Hz, each with a random offset. Losses inside
// the metal make the highest modes decay first.
void addPlateModes(Sound& sound, double t60Ms, double level, std::uint64_t seed) {
    constexpr int kModeCount = 90;
    constexpr double kMinHz = 390.0;
    constexpr double kSpacingHz = 118.0;
    constexpr double kStickContactMs = 0.16;
    constexpr double kHalfDecayHz = 9000.0; // where the decay time is t60Ms / 2

    Noise random(seed);
    for (int index = 0; index < kModeCount; ++index) {
        const double hz = kMinHz + kSpacingHz * (index + 0.45 * random.next());
        double gain = level * (1.0 + 0.4 * random.next());
        double decay = t60Ms / (1.0 + hz * hz / (kHalfDecayHz * kHalfDecayHz));
        if (hz < 1500.0) {
            decay *= 0.75; // these dominate the first 20 ms, then radiate away quickly
            gain *= 1.5;
        }
        strike(sound, kStickContactMs, {hz, gain, decay}, {0.0, 0.4 * random.next()});
    }
}

// The noise burst of the stick's impact.
void addStickNoise(Sound& sound, double gain, std::uint64_t seed) {
    addNoise(sound, {.seed = seed,
                     .filters = {bandPass(3500.0, 0.8)},
                     .decays = {{1.0, 0.6, 30.0}},
                     .gain = gain,
                     .sideGain = 0.3});
}

} // namespace

Sound charleston(std::size_t frames) {
    Sound sound(frames);
    const Signal bank = oscillatorBank(kCharlestonTuning, 0.8, frames);
    const std::vector<Decay> decays = {{0.70, 0.6, 60.0}, {0.30, 1.5, 240.0}};
    const std::vector<FilterStage> noiseFilters = {steepHighPass(6800.0), lowPass(14000.0)};
    const Band body = {.bankFilters = {steepHighPass(6200.0), bandPass(8600.0, 0.45)},
                       .bankGain = 0.85,
                       .noiseFilters = noiseFilters,
                       .noiseGain = 0.52,
                       .decays = decays};
    // The stick's attack: lower partials, too short to be heard as a pitch.
    const Band attack = {.bankFilters = {steepHighPass(3000.0), bandPass(4600.0, 0.9)},
                         .gain = 0.9,
                         .decays = {{1.0, 0.3, 28.0}}};
    Band side = body;
    side.bankGain = 0.0; // closed plates ring as one source: only their noise is stereo
    side.noiseGain = 0.26;
    addBand(sound.mid, body, bank, 601);
    addBand(sound.mid, attack, bank, 603);
    addBand(sound.side, side, Signal(), 602);
    return sound;
}

Sound crashCymbal(std::size_t frames) {
    Sound sound(frames);
    const Band low = {
        .bankFilters = {bandPass(1150.0, 1.1)}, .gain = 0.14, .decays = {{1.0, 3.0, 1900.0}}};
    const Band middle = {.bankFilters = {highPass(1500.0), bandPass(3900.0, 0.75)},
                         .bankGain = 0.95,
                         .noiseFilters = {bandPass(4400.0, 0.75)},
                         .noiseGain = 0.36,
                         .gain = 0.52,
                         .decays = withTransient({{1.0, 4.0, 3300.0}}, -0.65, 70.0)};
    const Band high = {.bankFilters = {steepHighPass(6800.0)},
                       .bankGain = 0.90,
                       .noiseFilters = {steepHighPass(7200.0)},
                       .noiseGain = 0.48,
                       .filters = {lowPass(15500.0)},
                       .gain = 0.70,
                       .decays =
                           withTransient({{0.55, 1.0, 1700.0}, {0.45, 1.0, 510.0}}, 2.6, 35.0)};
    addBands(sound, {kCharlestonTuning, 0.45, {low, middle, high}, 610});
    addPlateModes(sound, 3400.0, 0.060, 620);
    addStickNoise(sound, 0.8, 621);
    return sound;
}

Sound rideCymbal(std::size_t frames) {
    constexpr double kPitchRatio = 1.27; // relative to the crash: a smaller plate
    constexpr double kTipContactMs = 0.18;
    constexpr auto kPingModes = std::to_array<Mode>({
        {2873.0, 0.210, 900.0},
        {3461.0, 0.336, 830.0},
        {4297.0, 0.420, 760.0},
        {5189.0, 0.315, 690.0},
        {6420.0, 0.210, 620.0},
        {7710.0, 0.147, 550.0},
    });

    Sound sound(frames);
    const Band low = {.bankFilters = {bandPass(kPitchRatio * 1150.0, 1.1)},
                      .gain = 0.05,
                      .decays = {{1.0, 3.0, 800.0}}};
    const Band middle = {
        .bankFilters = {highPass(kPitchRatio * 1500.0), bandPass(kPitchRatio * 3900.0, 0.75)},
        .bankGain = 0.95,
        .noiseFilters = {bandPass(kPitchRatio * 4400.0, 0.75)},
        .noiseGain = 0.36,
        .gain = 0.28,
        .decays = withTransient({{1.0, 4.0, 1500.0}}, -0.65, 30.0)};
    const Band high = {.bankFilters = {steepHighPass(6800.0)},
                       .bankGain = 0.90,
                       .noiseFilters = {steepHighPass(7200.0)},
                       .noiseGain = 0.48,
                       .filters = {lowPass(15500.0)},
                       .gain = 0.50,
                       .decays =
                           withTransient({{0.55, 1.0, 1150.0}, {0.45, 1.0, 345.0}}, 1.6, 35.0)};
    addBands(sound, {scaled(kRideTuning, kPitchRatio), 0.45, {low, middle, high}, 630});
    addPlateModes(sound, 1500.0, 0.045, 640);
    double sideGain = 0.2; // modes alternate between left and right
    for (const Mode& mode : kPingModes) {
        strike(sound, kTipContactMs, mode, {0.0, sideGain});
        sideGain = -sideGain;
    }
    addStickNoise(sound, 1.2, 641);
    return sound;
}

} // namespace recordings
