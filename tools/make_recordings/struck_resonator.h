#pragma once

#include "sound.h"

namespace recordings {

// One mode of a struck body: a resonator that rings at hz and falls 60 dB in t60Ms.
// While the skin or the circuit is still under strain it rings higher:
// hz * (1 + glide * exp(-t / glideTauMs) + sigh * exp(-t / sighTauMs)).
struct Mode {
    double hz;
    double gain; // before the low-pass that the contact time is
    double t60Ms;
    double glide = 0.0;
    double glideTauMs = 10.0;
    double sigh = 0.0; // a second, slow glide
    double sighTauMs = 100.0;
};

// Adds the mode's answer to a raised-cosine blow of contactMs and unit area. The
// length of contact is the mallet: its spectrum has the first null at 2 / contactMs,
// so a soft, long blow leaves high modes asleep.
void strike(Signal& target, double contactMs, const Mode& mode);

// The same mode in the side, weaker and slightly out of tune with the mid, so that
// the two channels drift apart as the sound rings.
struct SideTuning {
    double detune; // relative, 0.003 is 5 cents
    double gain;   // as a factor on the mode's; negative leans to the right
};

void strike(Sound& target, double contactMs, const Mode& mode, const SideTuning& side);

} // namespace recordings
