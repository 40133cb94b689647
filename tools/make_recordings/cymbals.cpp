// Charleston and cymbals: a bank of metal through band-passes, each with its own
// decay, as in circuits that make a cymbal of square waves (Werner, Abel and Smith,
// ICMC/SMC 2014). One envelope for all bands would be a gate on hiss; what makes it
// metal is that the top dies first while the middle is still building up.

#include "metal_bands.h"
#include "noise.h"
#include "struck_resonator.h"
#include "voices.h"

#include <array>

namespace recordings {
namespace {

constexpr BankTuning kCharlestonTuning = {318.7, 437.3, 541.9, 664.1, 783.7, 951.3};
constexpr BankTuning kRideTuning = {331.1, 409.7, 563.3, 617.9, 811.3, 1013.9};

// The plate under the wash, and what keeps the tail from turning into steady
// oscillators: single modes with a decay each (Ducceschi, Touzé and Bilbao, Stockholm
// Music Acoustics Conference 2013). A thin plate has about as many in every kilohertz,
// so they are spread evenly over Hz, none quite in its place, and crowd together
// towards the top. Losses inside the metal take the highest first.
void addPlateModes(Sound& sound, double t60Ms, double level, std::uint64_t seed) {
    constexpr int kModes = 90;
    constexpr double kLowestHz = 390.0;
    constexpr double kSpacingHz = 118.0;
    constexpr double kStickMs = 0.16;
    constexpr double kLossHz = 9000.0; // where the decay time has halved

    Noise chance(seed);
    for (int index = 0; index < kModes; ++index) {
        const double hz = kLowestHz + kSpacingHz * (index + 0.45 * chance.next());
        double gain = level * (1.0 + 0.4 * chance.next());
        double decay = t60Ms / (1.0 + hz * hz / (kLossHz * kLossHz));
        if (hz < 1500.0) {
            decay *= 0.75; // radiated away first, and loudest in the first 20 ms
            gain *= 1.5;
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
    const Signal bank = metalBank(kCharlestonTuning, 0.8, frames);
    const std::vector<Decay> snap = {{0.70, 0.6, 60.0}, {0.30, 1.5, 240.0}};
    const std::vector<FilterStage> hiss = {steepHighPass(6800.0), lowPass(14000.0)};
    const Band metal = {.metalFilters = {steepHighPass(6200.0), bandPass(8600.0, 0.45)},
                        .metalGain = 0.85,
                        .noiseFilters = hiss,
                        .noiseGain = 0.52,
                        .decays = snap};
    // The stick: lower metal, gone before it could tell a pitch.
    const Band chick = {.metalFilters = {steepHighPass(3000.0), bandPass(4600.0, 0.9)},
                        .gain = 0.9,
                        .decays = {{1.0, 0.3, 28.0}}};
    Band air = metal;
    air.metalGain = 0.0; // two closed plates ring as one: only their hiss is wide
    air.noiseGain = 0.26;
    addBand(sound.mid, metal, bank, 601);
    addBand(sound.mid, chick, bank, 603);
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
    addPlateModes(sound, 3400.0, 0.060, 620);
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
    addPlateModes(sound, 1500.0, 0.045, 640);
    double lean = 0.2; // alternate modes to either side
    for (const Mode& mode : kPing) {
        strike(sound, kTipMs, mode, {0.0, lean});
        lean = -lean;
    }
    addStick(sound, 1.2, 641);
    return sound;
}

} // namespace recordings
