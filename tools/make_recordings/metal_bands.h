#pragma once

#include "envelopes.h"
#include "filters.h"
#include "metal_bank.h"
#include <cstdint>
#include <vector>

namespace recordings {

// What one band is made of: metal and noise, each brought to rms 1 behind its own
// filters, mixed, filtered together, then shaped. The middle band's high-pass keeps
// the bank's fundamentals out: they are so strong that its skirt alone would not.
struct Band {
    std::vector<FilterStage> metalFilters = {};
    double metalGain = 1.0;
    std::vector<FilterStage> noiseFilters = {};
    double noiseGain = 0.0;
    std::vector<FilterStage> filters = {};
    double gain = 1.0;
    std::vector<Decay> decays = {};
};

// The band's noise comes from the seed.
void addBand(Signal& target, const Band& band, const Signal& metal, std::uint64_t seed);

struct Cymbal {
    BankTuning tuning;
    double ringGain;
    std::vector<Band> bands;
    std::uint64_t seed; // of the first band; the others count on from it
};

// Mid and side. The side is the same cymbal seen from another spot: its bank a little
// sharper, other noise.
void addBands(Sound& sound, const Cymbal& cymbal);

BankTuning scaled(BankTuning tuning, double factor) noexcept;

} // namespace recordings
