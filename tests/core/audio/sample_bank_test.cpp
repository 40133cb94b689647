#include "audio/sample_bank.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace percussomatic {
namespace {

// Eight values, long enough that nothing is refused for its size alone.
const std::vector<std::int16_t> kValues{1, 2, 3, 4, 5, 6, 7, 8};

Bytes goodFile() {
    return WaveBuilder().format({}).values16(kValues).bytes();
}

Bytes patched(std::size_t offset, std::string_view text) {
    Bytes file = goodFile();
    const Bytes patch = toBytes(text);
    std::copy(patch.begin(), patch.end(), file.begin() + static_cast<std::ptrdiff_t>(offset));
    return file;
}

TEST(ParseWave, RefusesFilesItCannotPlay) {
    const auto withFormat = [](const WaveFormat& format) {
        return WaveBuilder().format(format).values16(kValues).bytes();
    };
    const Bytes padding(40);
    const struct {
        const char* what;
        Bytes file;
    } cases[] = {
        {"nothing", {}},
        {"not RIFF", patched(0, "RIFX")},
        {"not WAVE", patched(8, "WAVF")},
        {"empty data, the smallest file", WaveBuilder().format({}).values16({}).bytes()},
        {"empty data at the very end, which counts",
         WaveBuilder().format({}).values16(kValues).values16({}).bytes()},
        {"no data", WaveBuilder().format({}).chunk("LIST", padding).bytes()},
        {"no format", WaveBuilder().values16(kValues).chunk("LIST", padding).bytes()},
        {"short format", WaveBuilder().chunk("fmt ", Bytes(14)).values16(kValues).bytes()},
        {"truncated chunk after good data",
         WaveBuilder().format({}).values16(kValues).chunk("LIST", padding, 41).bytes()},
        {"size that overflows 32 bits",
         WaveBuilder().format({}).values16(kValues).chunk("LIST", padding, 0xFFFFFFF8U).bytes()},
        {"size that comes back to its own chunk",
         WaveBuilder().format({}).chunk("LIST", padding, 0xFFFFFFF7U).values16(kValues).bytes()},
        {"rate 0", withFormat({.sampleRate = 0})},
        {"no channel", withFormat({.channels = 0})},
        {"three channels", withFormat({.channels = 3})},
        {"extensible", withFormat({.tag = 0xFFFE})},
        {"frame wider than the data", withFormat({.bits = 65535})},
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
        // Three stereo frames with the value on the right only, and a few bytes that
        // do not make a frame.
        std::string frames;
        for (int frame = 0; frame < 3; ++frame) {
            frames.append(value.size(), '\0').append(value);
        }
        frames.append(value.size() * 2 - 1, '\x55');
        const auto sample = parseWave(WaveBuilder()
                                          .format({.tag = tag, .channels = 2, .bits = bits})
                                          .chunk("data", toBytes(frames))
                                          .bytes());
        ASSERT_TRUE(sample);
        EXPECT_EQ(sample->left, std::vector<float>(3));
        EXPECT_EQ(sample->right, std::vector<float>(3, expected));
    }
}

TEST(ParseWave, WalksAllChunks) {
    const Bytes odd(7, std::byte{'d'});
    const auto sample = parseWave(WaveBuilder()
                                      .chunk("junk", odd)
                                      .values16({9, 9, 9})
                                      .format({.channels = 2, .bits = 8})
                                      .format({.sampleRate = 11025})
                                      .chunk("fmt ", Bytes(15)) // too short to count
                                      .chunk("data", toBytes(std::string_view("\0\x40\0\xC0\1", 5)))
                                      .chunk("LIST", odd)
                                      .bytes());
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->sampleRate, 11025U);
    EXPECT_EQ(sample->left, (std::vector<float>{0.5f, -0.5f}));
    EXPECT_EQ(sample->right, sample->left);
}

TEST(ParseWave, TakesAFileThatEndsWithoutItsPadByteOrInAHalfHeader) {
    Bytes file = WaveBuilder().format({.bits = 24}).chunk("data", Bytes(9)).bytes();
    file.pop_back();
    EXPECT_TRUE(parseWave(file));
    file.insert(file.end(), 8, std::byte{0xFF});
    EXPECT_TRUE(parseWave(file));
}

} // namespace
} // namespace percussomatic
