#include "support/wave_builder.h"

#include <type_traits>

namespace percussomatic {

namespace {

template <typename Value>
void append(Bytes& bytes, Value value) {
    const auto bits = static_cast<std::make_unsigned_t<Value>>(value);
    for (std::size_t byte = 0; byte < sizeof(Value); ++byte) {
        bytes.push_back(static_cast<std::byte>(bits >> (8 * byte)));
    }
}

void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

} // namespace

WaveBuilder::WaveBuilder() : bytes_(toBytes(std::string_view("RIFF\0\0\0\0WAVE", 12))) {}

WaveBuilder& WaveBuilder::format(const WaveFormat& format) {
    const auto frameBytes = static_cast<std::uint16_t>(format.channels * (format.bits / 8));
    Bytes body;
    append(body, format.tag);
    append(body, format.channels);
    append(body, format.sampleRate);
    append(body, format.sampleRate * frameBytes);
    append(body, frameBytes);
    append(body, format.bits);
    return chunk("fmt ", body);
}

WaveBuilder& WaveBuilder::values16(const std::vector<std::int16_t>& values) {
    Bytes body;
    for (const std::int16_t value : values) {
        append(body, value);
    }
    return chunk("data", body);
}

WaveBuilder& WaveBuilder::chunk(std::string_view id, const Bytes& body,
                                std::optional<std::uint32_t> claimedSize) {
    append(bytes_, toBytes(id));
    append(bytes_, claimedSize.value_or(static_cast<std::uint32_t>(body.size())));
    append(bytes_, body);
    if (body.size() % 2 != 0) {
        bytes_.push_back(std::byte{0xAA});
    }
    return *this;
}

Bytes toBytes(std::string_view text) {
    Bytes bytes;
    for (const char character : text) {
        bytes.push_back(static_cast<std::byte>(character));
    }
    return bytes;
}

} // namespace percussomatic
