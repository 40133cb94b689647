// SPDX-License-Identifier: MIT
#pragma once

#include "audio/plane.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace percussomatic {

// One decoded recording of an instrument. Both channels have the recording's length in frames; a
// mono recording has the same values in both.
struct Sample {
    std::uint32_t sampleRate = 0; // Hz as found in the file; the mixer resamples
    Plane left, right;            // nominally -1..1

    // No value is infinite or NaN, which parseWave() guarantees. The mixer may then skip
    // interpolation at whole positions.
    bool finite = false;
};

// Recordings in load order. Recordings are only ever appended: an index stays valid for the life of
// the process, a pointer into the bank does not.
using SampleBank = std::vector<Sample>;

// Decodes a RIFF/WAVE file of one or two channels: integers of 16, 24 or 32 bits and floats of 32
// bits. Any other width of at least 8 bits yields silence of the right length. Floats are clamped
// to -1..1, a NaN becomes 0. Returns nullopt for a file that is damaged, empty or of another kind.
// Throws std::bad_alloc. Any thread.
std::optional<Sample> parseWave(std::span<const std::byte> bytes);

} // namespace percussomatic
