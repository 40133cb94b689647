// Triangle: sparse high partials that beat.

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
    double beatHz; // to the twin
};

// A bent bar rings in its plane and across it (Stanciu and others, Applied Sciences 12,
// 2022): two series of a free bar, 1 : 2.76 : 5.40 : 8.93 and so on, slightly apart.
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
    constexpr double kBeaterMs = 0.05; // steel on steel
    constexpr double kTwinGain = 0.40;
    constexpr SideTuning kCentre = {0.0, 0.0};

    Sound sound(frames);
    double lean = 0.3;
    for (const Partial& partial : kPartials) {
        strike(sound, kBeaterMs, {partial.hz, partial.gain, partial.t60Ms}, kCentre);
        strike(sound, kBeaterMs,
               {partial.hz + partial.beatHz, kTwinGain * partial.gain, partial.t60Ms}, {0.0, lean});
        // A short sharp copy makes the attack stand out, as the first touch of the
        // beater does. Without it the tail would be too loud for the peak.
        strike(sound, kBeaterMs, {1.0007 * partial.hz, 2.1 * partial.gain, 0.09 * partial.t60Ms},
               kCentre);
        lean = -lean; // the shimmer moves; the tone stays in the middle
    }
    addNoise(sound, {.seed = 701,
                     .filters = {steepHighPass(5000.0), lowPass(14000.0)},
                     .decays = {{1.0, 0.4, 12.0}},
                     .gain = 2.6,
                     .sideGain = 0.2});
    return sound;
}

} // namespace recordings
