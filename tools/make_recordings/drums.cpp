// SPDX-License-Identifier: MIT
// Bass drum (an analogue resonator circuit) and timbals (membrane and shell modes).

#include "noise.h"
#include "struck_resonator.h"
#include "voices.h"

#include <algorithm>
#include <array>

namespace recordings {
namespace {

// The click of a trigger pulse that leaks into the output: one cycle of a sine.
void addClick(Signal& target, double lengthMs, double gain) {
    const std::size_t frames = std::min(framesIn(lengthMs), target.size());
    for (std::size_t frame = 0; frame < frames; ++frame) {
        target[frame] +=
            gain * std::sin(2.0 * kPi * static_cast<double>(frame) / static_cast<double>(frames));
    }
}

struct Partial {
    double frequency; // membrane: ratio to the drum's fundamental; shell: Hz
    double gain;
    double t60Ratio; // to the drum's decay time
    double glide;
    SideTuning side;
};

// Modes of an ideal membrane: the ratios are those of the zeros of Bessel functions.
// The fundamental deflects the skin most, so its pitch glides most. Only the second
// mode differs between the channels.
constexpr auto kMembraneModes = std::to_array<Partial>({
    {1.000, 1.00, 1.00, 0.07, {0.0, 0.0}},
    {1.594, 0.55, 0.72, 0.05, {0.0035, 0.1}},
    {2.136, 0.30, 0.55, 0.05, {0.0, 0.0}},
    {2.296, 0.20, 0.45, 0.05, {0.0, 0.0}},
    {2.653, 0.18, 0.40, 0.05, {0.0, 0.0}},
    {3.156, 0.10, 0.32, 0.05, {0.0, 0.0}},
});

// The metal shell rings at its own frequencies, damped by the skin.
constexpr auto kShellModes = std::to_array<Partial>({
    {2110.0, 0.13, 0.38, 0.0, {0.0030, 0.1}},
    {2790.0, 0.16, 0.34, 0.0, {0.0035, -0.1}},
    {3530.0, 0.10, 0.30, 0.0, {0.0040, 0.1}},
    {4710.0, 0.06, 0.26, 0.0, {0.0030, -0.1}},
});

struct Timbal {
    double hz;
    double t60Ms;
    double shellRatio; // a smaller drum's shell rings higher
    std::uint64_t seed;
};

Sound timbal(const Timbal& drum, std::size_t frames) {
    constexpr double kSkinContactMs = 1.1;
    constexpr double kRimContactMs = 0.3;
    // Tension rises with the square of the deflection, so the pitch glide decays twice
    // as fast as the sound (Fletcher, Rep. Prog. Phys. 62, 1999).
    const double tensionTauMs = 0.5 * drum.t60Ms / kTimeConstantsPerT60;

    Sound sound(frames);
    for (const Partial& partial : kMembraneModes) {
        strike(sound, kSkinContactMs,
               {drum.hz * partial.frequency, partial.gain, drum.t60Ms * partial.t60Ratio,
                partial.glide, tensionTauMs},
               partial.side);
    }
    for (const Partial& partial : kShellModes) {
        strike(sound, kRimContactMs,
               {drum.shellRatio * partial.frequency, partial.gain, drum.t60Ms * partial.t60Ratio},
               partial.side);
    }
    addNoise(sound, {.seed = drum.seed,
                     .filters = {bandPass(2900.0, 0.7)},
                     .decays = {{1.0, 0.5, 28.0}},
                     .gain = 0.75,
                     .sideGain = 0.15});
    return sound;
}

} // namespace

// A bridged-T resonator excited by its trigger pulse. While the pulse lasts, a
// transistor shorts part of the grounded leg and the pitch is an octave higher; leakage
// through the same transistor makes the pitch fall slowly afterwards (Werner, Abel and
// Smith, DAFx 2014). The second resonator models the shell. The shell and the even
// partials of the asymmetric clip lie between 90 and 200 Hz, where small loudspeakers
// still respond.
Sound bassDrum(std::size_t frames) {
    Sound sound(frames);
    strike(sound.mid, 4.0, {56.0, 1.0, 350.0, 1.0, 13.0, 0.05, 90.0});
    strike(sound.mid, 3.0, {112.0, -0.5, 220.0, 0.5, 12.0, 0.05, 90.0});
    addNoise(sound, {.seed = 101,
                     .filters = {highPass(300.0), lowPass(2600.0)},
                     .decays = {{1.0, 0.5, 18.0}},
                     .gain = 0.9,
                     .sideGain = 0.1});
    addClick(sound.mid, 2.2, 0.24);
    return sound;
}

Sound highTimbal(std::size_t frames) {
    return timbal({392.0, 300.0, 1.16, 201}, frames);
}

Sound lowTimbal(std::size_t frames) {
    return timbal({247.0, 620.0, 1.0, 202}, frames);
}

} // namespace recordings
