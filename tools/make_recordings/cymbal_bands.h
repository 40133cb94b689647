// SPDX-License-Identifier: MIT
#pragma once

#include "envelopes.h"
#include "filters.h"
#include "oscillator_bank.h"
#include <cstdint>
#include <vector>

namespace recordings {

// One frequency band: the oscillator bank and noise are filtered separately, scaled to
// rms 1 and mixed; the mix is filtered again and gets the envelope. A cymbal's middle
// band has a high-pass as well, because the bank's fundamentals are so strong that they
// would leak through the slope of its band-pass.
struct Band {
    std::vector<FilterStage> bankFilters = {};
    double bankGain = 1.0;
    std::vector<FilterStage> noiseFilters = {};
    double noiseGain = 0.0;
    std::vector<FilterStage> filters = {}; // of the mix
    double gain = 1.0;
    std::vector<Decay> decays = {};
};

// Adds the band to target; seed is that of its noise.
void addBand(Signal& target, const Band& band, const Signal& bank, std::uint64_t seed);

struct Cymbal {
    BankTuning tuning;
    double ringModGain;
    std::vector<Band> bands;
    std::uint64_t seed; // noise seed of the first band; the next bands use seed + 1, seed + 2, ...
};

// Adds the bands to mid and side. The side has the same bands with slightly higher
// oscillators and different noise, like the same cymbal from a second microphone.
void addBands(Sound& sound, const Cymbal& cymbal);

// All frequencies multiplied by factor.
BankTuning scaled(BankTuning tuning, double factor) noexcept;

} // namespace recordings
