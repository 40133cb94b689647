#pragma once

#include "sound.h"
#include <vector>

namespace recordings {

// One exponential with a raised-cosine attack. Two of them, a short one and a long
// one, give the fast-then-slow fall of a gate that discharges through a diode.
struct Decay {
    double weight;
    double attackMs;
    double t60Ms; // time to fall 60 dB, counted from the start of the attack
};

// Multiplies the signal by the sum of the decays.
void shape(Signal& signal, const std::vector<Decay>& decays);

// The decays times 1 + amount * exp(-t / tauMs): a swell when amount is negative, a
// burst when positive. Rates of exponentials add, so the product is again decays.
std::vector<Decay> bent(const std::vector<Decay>& decays, double amount, double tauMs);

} // namespace recordings
