#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace percussomatic {

// One recording of an instrument, decoded. Both planes have the same length, the
// recording's length in frames; a mono file has its channel in both.
struct Sample {
    std::uint32_t sampleRate = 0; // Hz as found in the file; the mixer resamples
    std::vector<float> left;      // nominally -1..1
    std::vector<float> right;

    // No value is infinite or NaN, as after parseWave(): the mixer may leave out what only
    // such values would show.
    bool finite = false;
};

// Recordings in load order. They are only ever appended, so that an index stays
// good for the life of the process. A pointer into the bank does not.
using SampleBank = std::vector<Sample>;

// Decodes a RIFF/WAVE file of one or two channels: integers of 16, 24 or 32 bits
// and 32-bit floats. Other widths from 8 bits up load at their right length but
// silent. Floats are clamped to -1..1 and a NaN becomes 0; integers are not
// clamped. Nothing for a file that is damaged, empty or of another kind.
// Running out of memory is thrown.
std::optional<Sample> parseWave(std::span<const std::byte> bytes);

} // namespace percussomatic
