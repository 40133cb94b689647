// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace percussomatic {

using Bytes = std::vector<std::byte>;

// Contiguous numbers in this machine's byte order, which is little-endian.
template <typename Values>
Bytes toBytes(const Values& values) {
    const auto bytes = std::as_bytes(std::span(values));
    return {bytes.begin(), bytes.end()};
}

struct WaveFormat {
    std::uint16_t tag = 1, channels = 1;
    std::uint32_t sampleRate = 48000;
    std::uint16_t bits = 16;
    std::size_t chunkBytes = 16; // more are filled with 0xAA
};

// Builds RIFF/WAVE files, valid or not, chunk by chunk.
class WaveBuilder {
public:
    WaveBuilder& format(const WaveFormat& format) {
        const auto frameBytes = static_cast<std::uint16_t>(format.channels * (format.bits / 8));
        const std::uint32_t rate = format.sampleRate;
        Bytes body = toBytes(std::vector{format.tag, format.channels});
        append(body, toBytes(std::vector{rate, rate * frameBytes}));
        append(body, toBytes(std::vector{frameBytes, format.bits}));
        body.resize(format.chunkBytes, std::byte{0xAA});
        return chunk("fmt ", body);
    }
    WaveBuilder& values16(const std::vector<std::int16_t>& values) {
        return chunk("data", toBytes(values));
    }

    // Pads an odd body. Writes the body's size unless another one is given.
    WaveBuilder& chunk(std::string_view id, const Bytes& body,
                       std::optional<std::uint32_t> writtenSize = {}) {
        const auto size = static_cast<std::uint32_t>(body.size());
        append(bytes_, toBytes(id));
        append(bytes_, toBytes(std::vector{writtenSize.value_or(size)}));
        append(bytes_, body);
        bytes_.resize(bytes_.size() + size % 2, std::byte{0xAA});
        return *this;
    }

    Bytes bytes() const { return bytes_; }

private:
    static void append(Bytes& bytes, const Bytes& more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
    }

    Bytes bytes_ = toBytes(std::string_view("RIFF\0\0\0\0WAVE", 12));
};

} // namespace percussomatic
