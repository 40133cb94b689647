// SPDX-License-Identifier: MIT
#pragma once

#include "sound.h"
#include <array>

namespace recordings {

inline constexpr std::size_t kBankOscillators = 6;

using BankTuning = std::array<double, kBankOscillators>; // Hz

// Six free-running pulse oscillators at inharmonic frequencies, summed, plus the ring
// modulation of three pairs, scaled by ringModGain: the metallic source of the cymbals,
// before any filter or envelope.
//
// Each oscillator is a sum of cosines up to 20 kHz, so nothing aliases: a product reaches
// 40 kHz at most, below half the sample rate, and the final low-pass removes what lies
// above 24 kHz.
Signal oscillatorBank(const BankTuning& tuning, double ringModGain, std::size_t frames);

} // namespace recordings
