// SPDX-License-Identifier: MIT
#include "audio/sample_bank.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace percussomatic {
namespace {

// Eight values, so that no file is refused only because it is too short.
const std::vector<std::int16_t> kValues{1, 2, 3, 4, 5, 6, 7, 8};

WaveBuilder wave(const WaveFormat& format = {}) {
    return WaveBuilder().format(format);
}

Bytes patched(std::size_t offset, char byte) {
    Bytes file = wave().values16(kValues).bytes();
    file[offset] = static_cast<std::byte>(byte);
    return file;
}

TEST(ParseWave, RefusesFilesItCannotPlay) {
    const Bytes other(40);
    const std::pair<const char*, Bytes> cases[] = {
        {"no bytes", {}},
        {"not RIFF", patched(3, 'X')},
        {"not WAVE", patched(11, 'F')},
        {"empty data in the smallest file", wave().values16({}).bytes()},
        {"empty last data chunk", wave().values16(kValues).values16({}).bytes()},
        {"no data", wave().chunk("LIST", other).bytes()},
        {"no format", WaveBuilder().values16(kValues).chunk("LIST", other).bytes()},
        {"short format", wave({.chunkBytes = 14}).values16(kValues).bytes()},
        {"truncated last chunk", wave().values16(kValues).chunk("LIST", other, 41).bytes()},
        {"size that overflows 32 bits",
         wave().values16(kValues).chunk("LIST", other, 0xFFFFFFF8U).bytes()},
        {"size that wraps to the same chunk",
         wave().chunk("LIST", other, 0xFFFFFFF7U).values16(kValues).bytes()},
        {"rate 0", wave({.sampleRate = 0}).values16(kValues).bytes()},
        {"no channel", wave({.channels = 0}).values16(kValues).bytes()},
        {"three channels", wave({.channels = 3}).values16(kValues).bytes()},
        {"extensible", wave({.tag = 0xFFFE}).values16(kValues).bytes()},
        {"frame larger than the data", wave({.bits = 65535}).values16(kValues).bytes()},
    };
    for (const auto& [what, file] : cases) {
        EXPECT_FALSE(parseWave(file)) << what;
    }
}

TEST(ParseWave, ConvertsEachWidth) {
    using Limits = std::numeric_limits<float>;
    const auto floatBytes = [](float value) {
        return std::string(reinterpret_cast<const char*>(&value), sizeof value);
    };
    const struct {
        std::uint16_t tag, bits;
        std::string value;
        float expected;
    } cases[] = {
        {1, 16, {"\x00\x80", 2}, -1.0f},
        {1, 16, {"\xFF\x7F", 2}, 32767.0f / 32768.0f},
        {3, 16, {"\xFF\xFF", 2}, -1.0f / 32768.0f},
        {1, 24, {"\x00\x00\x80", 3}, -1.0f},
        {1, 24, {"\xFF\xFF\x7F", 3}, 8388607.0f / 8388608.0f},
        {1, 32, {"\x00\x00\x00\x80", 4}, -1.0f},
        {1, 32, {"\xFF\xFF\xFF\x7F", 4}, 1.0f},
        {1, 32, {"\xC1\x00\x00\x40", 4}, 0x1.000004p-1f}, // between two floats
        {3, 32, floatBytes(0.1f), 0.1f},
        {3, 32, floatBytes(1.5f), 1.0f},
        {3, 32, floatBytes(-Limits::infinity()), -1.0f},
        {3, 32, floatBytes(Limits::quiet_NaN()), 0.0f},
        {3, 64, {"\xFF\xFF\xFF\xFF\xFF\xFF\xEF\x3F", 8}, 0.0f},
    };
    for (const auto& [tag, bits, value, expected] : cases) {
        SCOPED_TRACE(testing::Message() << "tag " << tag << ", " << bits << " bits");
        // Three stereo frames with a value in the right channel only, and an incomplete frame.
        const std::string zero(value.size(), '\0'), incomplete(value.size() * 2 - 1, '\x55');
        const std::string frame = zero + value;
        const Bytes frames =
            toBytes(std::string(frame).append(frame).append(frame).append(incomplete));
        const WaveFormat format{.tag = tag, .channels = 2, .bits = bits, .chunkBytes = 40};
        const auto sample = parseWave(wave(format).chunk("data", frames).bytes());
        ASSERT_TRUE(sample);
        EXPECT_EQ(sample->left, std::vector<float>(3));
        EXPECT_EQ(sample->right, std::vector<float>(3, expected));
    }
}

TEST(ParseWave, UsesTheLastFormatAndTheLastDataChunk) {
    const Bytes odd(7, std::byte{'d'});
    Bytes file = WaveBuilder()
                     .chunk("junk", odd)
                     .values16({9, 9, 9})
                     .format({.channels = 2, .bits = 8})
                     .format({.sampleRate = 11025, .chunkBytes = 18})
                     .chunk("fmt ", Bytes(15)) // too short, so it is skipped
                     .chunk("data", toBytes(std::string_view("\0\x40\0\xC0\1", 5)))
                     .chunk("LIST", odd)
                     .bytes();
    // A missing pad byte at the end does no harm, nor do the first bytes of a chunk header.
    file.pop_back();
    for (const std::size_t size : {file.size(), file.size() + 8}) {
        file.resize(size, std::byte{0xFF});
        const auto sample = parseWave(file);
        ASSERT_TRUE(sample);
        EXPECT_EQ(sample->sampleRate, 11025U);
        EXPECT_EQ(sample->left, (std::vector<float>{0.5f, -0.5f}));
        EXPECT_EQ(sample->right, sample->left);
    }
}

} // namespace
} // namespace percussomatic
