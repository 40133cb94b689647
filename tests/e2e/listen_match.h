#pragma once

#include "audio/sample_bank.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace listen {

struct Found {
    std::size_t frame = 0; // of the capture, where the recording begins
    double likeness = 0.0; // 0..1
    double gain = 0.0;     // linear, of the recording
};

// Finds the hits of one recording in a captured stream of 48 kHz, left and right, by its attack.
// Hits may be quieter than the gain down to its half, and lie 20 ms apart at least. Other
// instruments may not sound at the same time.
//
// Both sides are differenced twice before they are correlated: that takes away the low tails of the
// hits before and leaves the stick, whose place is known to the frame.
std::vector<Found> findHits(std::span<const std::int16_t> capture,
                            const percussomatic::Sample& recording, double gain);

} // namespace listen
