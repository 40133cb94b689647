// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace recordings {

inline constexpr std::uint32_t kFileSampleRate = 96000;
inline constexpr std::uint32_t kFileChannels = 2;
inline constexpr std::uint32_t kBytesPerSample = 3;
inline constexpr std::int32_t kFullScale = 1 << 23; // one past the largest 24-bit sample

// Writes interleaved 24-bit samples as a RIFF/WAVE file: one 16-byte "fmt " chunk,
// then "data". Returns false if the file could not be written completely.
bool writeWaveFile(const std::filesystem::path& path, const std::vector<std::int32_t>& samples);

} // namespace recordings
