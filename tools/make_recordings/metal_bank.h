#pragma once

#include "sound.h"
#include <array>

namespace recordings {

inline constexpr std::size_t kBankOscillators = 6;

using BankTuning = std::array<double, kBankOscillators>; // Hz

// Six free-running pulse oscillators at unrelated pitches, summed, plus ringGain
// times the products of three pairs: the raw metal of cymbals, before any filter.
// Steady for its whole length.
//
// Oscillators are sums of cosines up to 20 kHz, so nothing folds back: a product
// reaches 40 kHz, below half the sample rate, and the final low-pass takes the rest.
Signal metalBank(const BankTuning& tuning, double ringGain, std::size_t frames);

} // namespace recordings
