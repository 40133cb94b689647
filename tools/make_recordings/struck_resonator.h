// SPDX-License-Identifier: MIT
#pragma once

#include "sound.h"

namespace recordings {

// One mode of a struck body or an excited circuit: a resonator that rings at hz and
// decays by 60 dB in t60Ms. A stretched skin, or a circuit during its trigger pulse,
// starts at a higher frequency:
// hz * (1 + glide * exp(-t / glideTauMs) + slowGlide * exp(-t / slowGlideTauMs)).
struct Mode {
    double hz;
    double gain; // before the low-pass effect of the contact time
    double t60Ms;
    double glide = 0.0;
    double glideTauMs = 10.0;
    double slowGlide = 0.0;
    double slowGlideTauMs = 100.0;
};

// Adds the mode's response to a strike: a raised-cosine pulse of contactMs and unit area.
// The contact time sets the hardness of the mallet: the spectrum of the pulse has its
// first null at 2 / contactMs, so a long, soft strike hardly excites the high modes.
void strike(Signal& target, double contactMs, const Mode& mode);

// How the side's copy of a mode differs from the mid's: quieter and slightly detuned, so
// that left and right drift apart while the sound decays.
struct SideTuning {
    double detune; // relative: 0.003 is 5 cents
    double gain;   // relative to the mode's gain: positive is louder on the left
};

void strike(Sound& target, double contactMs, const Mode& mode, const SideTuning& side);

} // namespace recordings
