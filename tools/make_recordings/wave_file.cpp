// SPDX-License-Identifier: MIT
#include "wave_file.h"

#include <fstream>
#include <string>
#include <string_view>

namespace recordings {
namespace {

void appendLittleEndian(std::string& bytes, std::uint32_t value, std::uint32_t count) {
    for (std::uint32_t byte = 0; byte < count; ++byte) {
        bytes.push_back(static_cast<char>((value >> (8 * byte)) & 0xffU));
    }
}

void appendChunkHead(std::string& bytes, std::string_view identifier, std::uint32_t size) {
    bytes += identifier;
    appendLittleEndian(bytes, size, 4);
}

} // namespace

bool writeWaveFile(const std::filesystem::path& path, const std::vector<std::int32_t>& samples) {
    constexpr std::uint32_t kPcmTag = 1;
    constexpr std::uint32_t kFrameBytes = kFileChannels * kBytesPerSample;
    constexpr std::uint32_t kFormatBytes = 16;
    constexpr std::uint32_t kBytesBeforeSamples = 4 + 8 + kFormatBytes + 8; // after the RIFF size
    const auto sampleBytes = static_cast<std::uint32_t>(samples.size() * kBytesPerSample);

    std::string bytes;
    bytes.reserve(8 + kBytesBeforeSamples + sampleBytes);
    appendChunkHead(bytes, "RIFF", kBytesBeforeSamples + sampleBytes);
    bytes += "WAVE";
    appendChunkHead(bytes, "fmt ", kFormatBytes);
    appendLittleEndian(bytes, kPcmTag, 2);
    appendLittleEndian(bytes, kFileChannels, 2);
    appendLittleEndian(bytes, kFileSampleRate, 4);
    appendLittleEndian(bytes, kFileSampleRate * kFrameBytes, 4);
    appendLittleEndian(bytes, kFrameBytes, 2);
    appendLittleEndian(bytes, 8 * kBytesPerSample, 2);
    appendChunkHead(bytes, "data", sampleBytes);
    for (const std::int32_t sample : samples) {
        appendLittleEndian(bytes, static_cast<std::uint32_t>(sample), kBytesPerSample);
    }

    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return file.good();
}

} // namespace recordings
