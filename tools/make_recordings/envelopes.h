// SPDX-License-Identifier: MIT
#pragma once

#include "sound.h"
#include <vector>

namespace recordings {

// An exponential decay with a raised-cosine attack. The sum of a short and a long one
// falls quickly at first and slowly later, like an envelope capacitor that discharges
// through a diode.
struct Decay {
    double weight;
    double attackMs;
    double t60Ms; // time to fall by 60 dB, from the start of the attack
};

// Multiplies the signal by the sum of the decays.
void applyEnvelope(Signal& signal, const std::vector<Decay>& decays);

// Returns the envelope multiplied by 1 + amount * exp(-t / tauMs): a negative amount makes
// it swell, a positive one adds a burst. Multiplying exponentials adds their rates, so
// the result is again a sum of decays.
std::vector<Decay> withTransient(const std::vector<Decay>& decays, double amount, double tauMs);

} // namespace recordings
