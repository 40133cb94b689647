#include "assets/assets.h"
#include "audio/sample_bank.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <numeric>
#include <ostream>
#include <span>
#include <string>
#include <unistd.h>
#include <vector>

namespace recordings_test {
namespace {

// Measures of a rendered recording, written for clearness and not for speed.

constexpr double kFramesPerMs = 96.0;
constexpr double kRateHz = 96000.0;
constexpr double kPi = std::numbers::pi;
constexpr std::size_t kHeaderBytes = 44;

using percussomatic::Sample;
using Signal = std::vector<float>;

std::span<const std::byte> bytesOf(const std::string& name) {
    return percussomatic::findAsset(name + ".wav").span();
}

Sample recordingOf(const std::string& name) {
    return percussomatic::parseWave(bytesOf(name)).value();
}

double decibels(double ratio) {
    return 20.0 * std::log10(std::max(ratio, 1e-30));
}

// What lies above the frequency, by a windowed sinc; up to that time.
Signal highPassed(const Signal& signal, double cutoffHz, double toMs) {
    constexpr int kHalf = 400; // taps on each side: from stop to pass in 660 Hz
    Signal taps;
    for (int tap = -kHalf; tap <= kHalf; ++tap) {
        const double turn = 2.0 * kPi * cutoffHz / kRateHz * tap, at = kPi * tap / kHalf;
        const double window = 0.42 + 0.5 * std::cos(at) + 0.08 * std::cos(2.0 * at);
        const double low = tap == 0 ? 2.0 * cutoffHz / kRateHz : std::sin(turn) / (kPi * tap);
        taps.push_back(static_cast<float>((tap == 0 ? 1.0 : 0.0) - window * low));
    }
    const auto frames = std::min(signal.size(), static_cast<std::size_t>(toMs * kFramesPerMs));
    Signal high;
    for (std::size_t frame = taps.size(); frame < frames; ++frame) {
        high.push_back(
            std::inner_product(taps.begin(), taps.end(), &signal[frame - taps.size()], 0.0F));
    }
    return high;
}

constexpr float kSilence = 1e-5F; // a voice that stays at or under it for 100 ms is freed

struct Range {
    double low;
    double high;
};

void expectWithin(const char* what, double value, Range range) {
    EXPECT_GE(value, range.low) << what;
    EXPECT_LE(value, range.high) << what;
}

struct Expected {
    const char* name;
    std::size_t frames;
    double peakDb;
    Range silentAfterMs;
};

void PrintTo(const Expected& expected, std::ostream* out) {
    *out << expected.name;
}

constexpr std::size_t kLong = 960000;
constexpr std::size_t kShort = 46500;

constexpr std::array<Expected, 12> kExpected = {{
    {"bass_drum", kShort, -9.9, {430, 470}},
    {"block_1", kShort, -10.5, {120, 200}},
    {"block_2", kShort, -10.0, {160, 260}},
    {"charleston", kLong, -14.4, {300, 450}},
    {"clave", kLong, -11.8, {180, 300}},
    {"cymbal_1", kLong, -11.8, {4000, 6000}},
    {"cymbal_2", kLong, -14.9, {1700, 2600}},
    {"rolling_snare", kLong, -14.5, {1000, 1400}},
    {"snare", kLong, -9.0, {400, 600}},
    {"timbal_1", kShort, -12.2, {400, 480}},
    {"timbal_2", kLong, -14.2, {800, 1100}},
    {"triangle", kLong, -14.5, {3000, 4500}},
}};

class Recordings : public testing::TestWithParam<Expected> {
protected:
    float level(std::size_t frame) const {
        return std::max(std::abs(recording.left[frame]), std::abs(recording.right[frame]));
    }

    const Sample recording = recordingOf(GetParam().name);
    const std::size_t frames = recording.left.size();
};

INSTANTIATE_TEST_SUITE_P(Kit, Recordings, testing::ValuesIn(kExpected),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(Recordings, IsA24BitStereoWaveFileOfItsLength) {
    const auto audioBytes = static_cast<std::uint32_t>(GetParam().frames * 6);
    // RIFF, WAVE, fmt and data are written as numbers.
    const std::array<std::uint32_t, kHeaderBytes / 4> header = {
        0x46464952, 36 + audioBytes, 0x45564157,   0x20746d66, 16,        1 | 2 << 16,
        96000,      576000,          6 | 24 << 16, 0x61746164, audioBytes};
    const auto bytes = bytesOf(GetParam().name);
    ASSERT_EQ(bytes.size(), kHeaderBytes + audioBytes);
    EXPECT_EQ(std::memcmp(bytes.data(), header.data(), kHeaderBytes), 0);
}

// Steps that coincide stay together only if every recording starts at the same time.
TEST_P(Recordings, HasItsLevelNoOffsetAndTheCommonStart) {
    float peak = 0.0F;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        peak = std::max(peak, level(frame));
    }
    EXPECT_NEAR(decibels(peak), GetParam().peakDb, 0.3);
    for (const Signal* channel : {&recording.left, &recording.right}) {
        const double sum = std::accumulate(channel->begin(), channel->end(), 0.0);
        EXPECT_NEAR(sum / static_cast<double>(frames), 0.0, 1e-7);
    }
    EXPECT_EQ(level(0), 0.0F);
    std::size_t onset = 0;
    while (level(onset) < 0.05F * peak) {
        ++onset;
    }
    expectWithin("onset ms", static_cast<double>(onset) / kFramesPerMs, {0.7, 1.3});
    EXPECT_LT(level(24), 0.001F * peak) << "click before the onset";
}

TEST_P(Recordings, FadesOnceAndForGood) {
    std::size_t lastLoud = 0;
    std::size_t longestGap = 0;
    // Every second frame, which is what the player hears.
    for (std::size_t frame = 0; frame < frames; frame += 2) {
        if (level(frame) > kSilence) {
            longestGap = std::max(longestGap, frame - lastLoud);
            lastLoud = frame;
        }
    }
    expectWithin("silent after ms", static_cast<double>(lastLoud) / kFramesPerMs,
                 GetParam().silentAfterMs);
    EXPECT_LT(static_cast<double>(longestGap) / kFramesPerMs, 100.0) << "freed in its middle";
    EXPECT_EQ(level(frames - 1), 0.0F);
}

TEST_P(Recordings, IsStereoThatMonoListenersCanTrust) {
    const Sample& sound = recording;
    EXPECT_NE(sound.left, sound.right);
    double energy = 0.0, mono = 0.0;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double left = sound.left[frame], right = sound.right[frame];
        energy += left * left + right * right;
        mono += 0.5 * (left + right) * (left + right);
    }
    EXPECT_GT(0.5 * decibels(mono / energy), -0.6) << "lost in mono";
}

// The player drops every second frame, without a filter.
TEST_P(Recordings, HasNothingThatFoldsAtHalfTheRate) {
    for (const Signal* channel : {&recording.left, &recording.right}) {
        const Signal high = highPassed(*channel, 24330.0, 240.0); // brightest at the start
        const auto [lowest, highest] = std::minmax_element(high.begin(), high.end());
        EXPECT_LT(decibels(std::max(-*lowest, *highest)), -80.0);
    }
}

// At full sliders and full master the mixer adds singles and clips at full scale. The loudest of
// all sets of four is at every frame the four highest or the four lowest.
TEST(Kit, AnyFourTogetherStayBelowFullScale) {
    std::vector<Sample> kit;
    kit.reserve(kExpected.size());
    for (const Expected& expected : kExpected) {
        kit.push_back(recordingOf(expected.name));
    }
    for (std::size_t frame = 0; frame < kLong; ++frame) {
        for (const auto channel : {&Sample::left, &Sample::right}) {
            std::array<float, kExpected.size()> together{};
            for (std::size_t voice = 0; voice < kit.size(); ++voice) {
                const Signal& sound = kit[voice].*channel;
                together[voice] = frame < sound.size() ? sound[frame] : 0.0F;
            }
            std::sort(together.begin(), together.end());
            ASSERT_LT(std::accumulate(together.end() - 4, together.end(), 0.0F), 1.0F) << frame;
            ASSERT_GT(std::accumulate(together.begin(), together.begin() + 4, 0.0F), -1.0F)
                << frame;
        }
    }
}

// One voice of each kind of source; alone and in another order than in the kit.
TEST(Tool, WritesTheSameBytesAgainAndRefusesUnknownNames) {
    const auto folder = std::filesystem::temp_directory_path() /
                        ("percussomatic_recordings_" + std::to_string(getpid()));
    const auto run = [&](const std::string& names) {
        const std::string tool = PERCUSSOMATIC_MAKE_RECORDINGS;
        return std::system(('"' + tool + "\" " + folder.string() + names + " 2>/dev/null").c_str());
    };
    EXPECT_NE(run(" block_1 cowbell"), 0);
    EXPECT_FALSE(std::filesystem::exists(folder));
    EXPECT_EQ(run(" triangle rolling_snare charleston block_1"), 0);
    for (const std::string name : {"triangle", "rolling_snare", "charleston", "block_1"}) {
        std::ifstream file(folder / (name + ".wav"), std::ios::binary);
        const std::string written(std::istreambuf_iterator<char>(file), {});
        const auto bytes = bytesOf(name);
        ASSERT_EQ(written.size(), bytes.size()) << name;
        EXPECT_EQ(std::memcmp(written.data(), bytes.data(), bytes.size()), 0) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "snare.wav"));
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace recordings_test
