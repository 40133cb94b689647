#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace percussomatic {

using Bytes = std::vector<std::byte>;

struct WaveFormat {
    std::uint16_t tag = 1;
    std::uint16_t channels = 1;
    std::uint32_t sampleRate = 48000;
    std::uint16_t bits = 16;
};

// Puts RIFF/WAVE files together, well formed or not.
class WaveBuilder {
public:
    WaveBuilder();

    WaveBuilder& format(const WaveFormat& format);
    WaveBuilder& values16(const std::vector<std::int16_t>& values); // as "data"

    // An odd body is padded. The claimed size is the body's unless told otherwise.
    WaveBuilder& chunk(std::string_view id, const Bytes& body,
                       std::optional<std::uint32_t> claimedSize = {});

    Bytes bytes() const { return bytes_; }

private:
    Bytes bytes_;
};

Bytes toBytes(std::string_view text);

} // namespace percussomatic
