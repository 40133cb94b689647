// SPDX-License-Identifier: MIT
#include "audio/sample_bank.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace percussomatic {

namespace {

constexpr std::size_t kMinFileBytes = 44; // RIFF header, "fmt " chunk, "data" chunk header
constexpr std::size_t kFirstChunkOffset = 12;
constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::uint32_t kMinFormatBytes = 16; // without extension
constexpr std::uint16_t kTagPcm = 1;
constexpr std::uint16_t kTagFloat = 3;

struct WaveLayout {
    std::uint16_t tag = 0;
    std::uint16_t channels = 0;
    std::uint32_t sampleRate = 0;
    std::uint16_t bits = 0;
    std::optional<std::span<const std::byte>> frames;
};

std::uint32_t byteAt(const std::byte* bytes, std::size_t offset) {
    return std::to_integer<std::uint32_t>(bytes[offset]);
}

std::uint16_t readU16(const std::byte* bytes) {
    return static_cast<std::uint16_t>(byteAt(bytes, 0) | byteAt(bytes, 1) << 8);
}

std::uint32_t readU32(const std::byte* bytes) {
    return byteAt(bytes, 0) | byteAt(bytes, 1) << 8 | byteAt(bytes, 2) << 16 |
           byteAt(bytes, 3) << 24;
}

bool hasId(const std::byte* bytes, const char (&id)[5]) {
    return std::memcmp(bytes, id, 4) == 0;
}

float decodeInt16(const std::byte* bytes) {
    return static_cast<float>(static_cast<std::int16_t>(readU16(bytes))) * 0x1p-15f;
}

float decodeInt24(const std::byte* bytes) {
    // Placed in the upper three bytes, so that the shift back extends the sign.
    const std::uint32_t upper =
        byteAt(bytes, 0) << 8 | byteAt(bytes, 1) << 16 | byteAt(bytes, 2) << 24;
    return static_cast<float>(static_cast<std::int32_t>(upper) >> 8) * 0x1p-23f;
}

// 31 bits do not fit into a float: scaled as a double, then rounded once.
float decodeInt32(const std::byte* bytes) {
    return static_cast<float>(static_cast<double>(static_cast<std::int32_t>(readU32(bytes))) *
                              0x1p-31);
}

// A NaN would stay in the reverb's feedback forever, so it becomes 0.
float decodeFloat32(const std::byte* bytes) {
    const auto value = std::bit_cast<float>(readU32(bytes));
    return std::isnan(value) ? 0.0f : std::clamp(value, -1.0f, 1.0f);
}

// Walks all chunks and uses the last "fmt " and the last "data" chunk. Returns nullopt if a chunk's
// size exceeds the file.
std::optional<WaveLayout> readChunks(std::span<const std::byte> bytes) {
    WaveLayout layout;
    std::uint64_t position = kFirstChunkOffset;
    while (position + kChunkHeaderBytes <= bytes.size()) {
        const std::byte* chunk = bytes.data() + position;
        const std::uint32_t size = readU32(chunk + 4);
        if (position + kChunkHeaderBytes + size > bytes.size()) {
            return std::nullopt;
        }
        const std::byte* body = chunk + kChunkHeaderBytes;
        if (hasId(chunk, "fmt ") && size >= kMinFormatBytes) {
            layout.tag = readU16(body);
            layout.channels = readU16(body + 2);
            layout.sampleRate = readU32(body + 4);
            layout.bits = readU16(body + 14);
        } else if (hasId(chunk, "data")) {
            layout.frames = std::span(body, size);
        }
        position += kChunkHeaderBytes + std::uint64_t{size} + (size & 1); // padded to even
    }
    return layout;
}

bool isPlayable(const WaveLayout& layout) {
    return layout.frames && layout.sampleRate != 0 &&
           (layout.channels == 1 || layout.channels == 2) &&
           (layout.tag == kTagPcm || layout.tag == kTagFloat) && layout.bits >= 8;
}

template <typename Decode>
void decodeFrames(const WaveLayout& layout, std::size_t valueBytes, Sample& sample, Decode decode) {
    const std::byte* frame = layout.frames->data();
    const std::size_t frameBytes = layout.channels * valueBytes;
    const std::size_t rightOffset = layout.channels == 2 ? valueBytes : 0;
    for (std::size_t i = 0; i < sample.left.size(); ++i, frame += frameBytes) {
        sample.left[i] = decode(frame);
        sample.right[i] = decode(frame + rightOffset);
    }
}

} // namespace

std::optional<Sample> parseWave(std::span<const std::byte> bytes) {
    // The size field of the RIFF header is ignored, because some programs write it wrong.
    if (bytes.size() < kMinFileBytes || !hasId(bytes.data(), "RIFF") ||
        !hasId(bytes.data() + 8, "WAVE")) {
        return std::nullopt;
    }
    const std::optional<WaveLayout> layout = readChunks(bytes);
    if (!layout || !isPlayable(*layout)) {
        return std::nullopt;
    }
    const std::size_t valueBytes = layout->bits / 8U;
    const std::size_t frameCount = layout->frames->size() / (layout->channels * valueBytes);
    if (frameCount == 0) {
        return std::nullopt;
    }

    Sample sample{layout->sampleRate, Plane(frameCount), Plane(frameCount)};
    if (layout->bits == 16) {
        decodeFrames(*layout, valueBytes, sample, decodeInt16);
    } else if (layout->bits == 24) {
        decodeFrames(*layout, valueBytes, sample, decodeInt24);
    } else if (layout->bits == 32 && layout->tag == kTagFloat) {
        decodeFrames(*layout, valueBytes, sample, decodeFloat32);
    } else if (layout->bits == 32) {
        decodeFrames(*layout, valueBytes, sample, decodeInt32);
    }
    sample.finite = true;
    return sample;
}

} // namespace percussomatic
