// SPDX-License-Identifier: MIT
// Wood blocks and clave: short sounds with a hard attack and a hollow tone.

#include "noise.h"
#include "struck_resonator.h"
#include "voices.h"

namespace recordings {
namespace {

constexpr SideTuning kMono = {0.0, 0.0};

struct Block {
    double hz;
    double t60Ms;
    double cavityRatio; // resonance of the air in the slit, relative to hz
    std::uint64_t seed;
};

// Two low peaks in the ratio 1 : 1.15 make the block sound hollow (Sunohara and others, JASA
// 117, 2005, by measurements and listening tests); one of them alone sounds like an
// electronic blip.
Sound block(const Block& wood, std::size_t frames) {
    constexpr double kMalletContactMs = 0.9;
    constexpr double kHardMalletContactMs = 0.4;
    constexpr double kGlide = 0.015;
    constexpr double kGlideTauMs = 6.0;
    const double cavityHz = wood.hz * wood.cavityRatio;

    Sound sound(frames);
    strike(sound, kMalletContactMs, {wood.hz, 1.0, wood.t60Ms, kGlide, kGlideTauMs}, kMono);
    strike(sound, kMalletContactMs, {1.15 * wood.hz, 0.55, 0.8 * wood.t60Ms, kGlide, kGlideTauMs},
           {0.0035, 0.1});
    strike(sound, kHardMalletContactMs, {cavityHz, 0.30, 0.45 * wood.t60Ms}, {0.003, -0.15});
    strike(sound, kHardMalletContactMs, {1.61 * cavityHz, 0.16, 0.3 * wood.t60Ms}, {0.004, 0.15});
    addNoise(sound, {.seed = wood.seed,
                     .filters = {bandPass(3.2 * wood.hz, 0.8)},
                     .decays = {{1.0, 0.4, 10.0}},
                     .gain = 0.55,
                     .sideGain = 0.15});
    filter(sound.mid, {highPass(0.45 * wood.hz)});
    filter(sound.side, {highPass(0.45 * wood.hz)});
    return sound;
}

} // namespace

Sound highBlock(std::size_t frames) {
    return block({1080.0, 95.0, 2.42, 501}, frames);
}

Sound lowBlock(std::size_t frames) {
    return block({640.0, 130.0, 2.57, 502}, frames);
}

// Two rods: their close fundamentals and the second bending mode, 2.71 times higher, of
// the rod that is held. The cupped hand below it adds a short resonance at 1240 Hz, the
// contact of the rods adds a click.
Sound clave(std::size_t frames) {
    Sound sound(frames);
    strike(sound, 0.35, {2520.0, 1.0, 150.0, 0.004}, kMono);
    strike(sound, 0.35, {2573.0, 0.28, 110.0}, {0.003, 0.3});
    strike(sound, 0.15, {6829.0, 0.45, 45.0}, {0.004, -0.15});
    strike(sound, 0.70, {1240.0, 0.42, 42.0}, kMono);
    addNoise(sound, {.seed = 503,
                     .filters = {bandPass(5200.0, 0.8)},
                     .decays = {{1.0, 0.3, 8.0}},
                     .gain = 0.38,
                     .sideGain = 0.15});
    filter(sound.mid, {highPass(600.0)});
    filter(sound.side, {highPass(600.0)});
    return sound;
}

} // namespace recordings
