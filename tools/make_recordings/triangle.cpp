// SPDX-License-Identifier: MIT
// Triangle: widely spaced high partials, each beating with a detuned copy.

#include "noise.h"
#include "struck_resonator.h"
#include "voices.h"

#include <array>

namespace recordings {
namespace {

struct Partial {
    double hz;
    double gain;
    double t60Ms;
    double beatHz; // detuning of the copy
};

// A bent bar vibrates both in its plane and perpendicular to it (Stanciu and others,
// Applied Sciences 12, 2022): two series of free-bar modes, 1 : 2.76 : 5.40 : 8.93 and so
// on, slightly apart.
constexpr auto kPartials = std::to_array<Partial>({
    {438.0, 0.03, 1000.0, 1.3},
    {494.0, 0.02, 1000.0, 1.7},
    {1188.0, 0.12, 2200.0, 1.9},
    {1342.0, 0.09, 2000.0, 2.3},
    {2331.0, 0.30, 3200.0, 2.1},
    {2604.0, 0.26, 3000.0, 2.9},
    {3878.0, 0.55, 3100.0, 2.6},
    {4297.0, 0.42, 2800.0, 3.7},
    {5840.0, 1.00, 2600.0, 3.1},
    {6422.0, 0.62, 2300.0, 4.3},
    {8094.0, 0.80, 2000.0, 4.9},
    {8893.0, 0.55, 1800.0, 5.3},
    {10790.0, 0.60, 1400.0, 6.1},
    {11830.0, 0.42, 1200.0, 5.7},
    {13850.0, 0.40, 900.0, 7.3},
    {15210.0, 0.30, 750.0, 8.2},
    {17320.0, 0.18, 500.0, 9.0},
});

} // namespace

Sound triangle(std::size_t frames) {
    constexpr double kBeaterContactMs = 0.05; // steel on steel
    constexpr double kCopyGain = 0.40;
    constexpr SideTuning kMono = {0.0, 0.0};

    Sound sound(frames);
    double sideGain = 0.3;
    for (const Partial& partial : kPartials) {
        strike(sound, kBeaterContactMs, {partial.hz, partial.gain, partial.t60Ms}, kMono);
        strike(sound, kBeaterContactMs,
               {partial.hz + partial.beatHz, kCopyGain * partial.gain, partial.t60Ms},
               {0.0, sideGain});
        // A louder, slightly sharp copy with a short decay emphasises the attack. Without
        // it the tail would be too loud compared with the peak.
        strike(sound, kBeaterContactMs,
               {1.0007 * partial.hz, 2.1 * partial.gain, 0.09 * partial.t60Ms}, kMono);
        sideGain = -sideGain; // only the beating moves between left and right
    }
    addNoise(sound, {.seed = 701,
                     .filters = {steepHighPass(5000.0), lowPass(14000.0)},
                     .decays = {{1.0, 0.4, 12.0}},
                     .gain = 2.6,
                     .sideGain = 0.2});
    return sound;
}

} // namespace recordings
