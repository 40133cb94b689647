// SPDX-License-Identifier: MIT
// Measures the synthesised recordings.

#include "assets/assets.h"
#include "audio/sample_bank.h"
#include "support/own_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <numeric>
#include <span>
#include <string>
#include <vector>

namespace percussomatic {
namespace {

constexpr double kFramesPerMs = 96.0;
constexpr std::size_t kLong = 960000, kShort = 46500; // frames
constexpr float kSilence = 1e-5f; // the engine frees a voice that stays below for 100 ms

using Signal = std::vector<float>;

std::span<const std::byte> bytesOf(const std::string& name) {
    return findAsset(name + ".wav").span();
}

double decibels(double ratio) {
    return 20.0 * std::log10(std::max(ratio, 1e-30));
}

// The part of the signal above a frequency, from its start; by a windowed sinc filter.
Signal highPassed(const Signal& signal, double cutoffHz, double durationMs) {
    constexpr int kHalf = 400; // taps on each side: a transition band of 660 Hz
    constexpr double kPi = std::numbers::pi;
    const double cutoff = 2.0 * cutoffHz / (1000.0 * kFramesPerMs); // of the Nyquist frequency
    Signal taps;
    for (int tap = -kHalf; tap <= kHalf; ++tap) {
        const double at = kPi * tap / kHalf;
        const double window = 0.42 + 0.5 * std::cos(at) + 0.08 * std::cos(2.0 * at);
        const double low = tap == 0 ? cutoff : std::sin(kPi * cutoff * tap) / (kPi * tap);
        taps.push_back(static_cast<float>((tap == 0 ? 1.0 : 0.0) - window * low));
    }
    const auto frames =
        std::min(signal.size(), static_cast<std::size_t>(durationMs * kFramesPerMs));
    Signal high;
    for (std::size_t frame = taps.size(); frame < frames; ++frame) {
        high.push_back(
            std::inner_product(taps.begin(), taps.end(), &signal[frame - taps.size()], 0.0f));
    }
    return high;
}

struct Expected {
    std::string name;
    std::size_t frames;
    double peakDb;
    double minMs, maxMs; // until it is silent
};

const std::array<Expected, 12> kKit = {{
    {"bass_drum", kShort, -9.9, 430, 470},
    {"block_1", kShort, -10.5, 120, 200},
    {"block_2", kShort, -10.0, 160, 260},
    {"charleston", kLong, -14.4, 300, 450},
    {"clave", kLong, -11.8, 180, 300},
    {"cymbal_1", kLong, -11.8, 4000, 6000},
    {"cymbal_2", kLong, -14.9, 1700, 2600},
    {"rolling_snare", kLong, -14.5, 1000, 1400},
    {"snare", kLong, -9.0, 400, 600},
    {"timbal_1", kShort, -12.2, 400, 480},
    {"timbal_2", kLong, -14.2, 800, 1100},
    {"triangle", kLong, -14.5, 3000, 4500},
}};

class Recordings : public testing::TestWithParam<std::size_t> {
protected:
    float level(std::size_t frame) const {
        return std::max(std::abs(recording.left[frame]), std::abs(recording.right[frame]));
    }

    const Expected& expected = kKit[GetParam()];
    const Sample recording = parseWave(bytesOf(expected.name)).value();
    const std::size_t frames = recording.left.size();
};

INSTANTIATE_TEST_SUITE_P(Kit, Recordings, testing::Range(std::size_t{0}, kKit.size()),
                         [](const auto& test) { return kKit[test.param].name; });

// Hits on one step sound simultaneous only if every recording starts with the same delay.
TEST_P(Recordings, StartsWithTheCommonDelayAndWithoutClick) {
    EXPECT_EQ(recording.sampleRate, 96000U);
    EXPECT_EQ(frames, expected.frames);
    EXPECT_EQ(bytesOf(expected.name).size(), 44 + 6 * frames) << "24-bit stereo";
    const auto peak = static_cast<float>(std::pow(10.0, expected.peakDb / 20.0));
    std::size_t onset = 0;
    while (level(onset) < 0.05f * peak) {
        ++onset;
    }
    EXPECT_NEAR(static_cast<double>(onset) / kFramesPerMs, 1.0, 0.3);
    EXPECT_EQ(level(0), 0.0f);
    EXPECT_LT(level(24), 0.001f * peak);
}

TEST_P(Recordings, IsAudibleInMonoAndFadesOutInTimeWithoutSilenceInside) {
    std::size_t lastLoud = 0, longestGap = 0;
    float peak = 0.0f;
    double energy = 0.0, mono = 0.0;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double left = recording.left[frame], right = recording.right[frame];
        energy += left * left + right * right;
        mono += 0.5 * (left + right) * (left + right);
        peak = std::max(peak, level(frame));
        if (frame % 2 == 0 && level(frame) > kSilence) { // the engine plays every second frame
            longestGap = std::max(longestGap, frame - lastLoud);
            lastLoud = frame;
        }
    }
    EXPECT_NEAR(decibels(peak), expected.peakDb, 0.3);
    EXPECT_NE(recording.left, recording.right);
    EXPECT_GT(0.5 * decibels(mono / energy), -0.6);
    EXPECT_GE(static_cast<double>(lastLoud) / kFramesPerMs, expected.minMs);
    EXPECT_LE(static_cast<double>(lastLoud) / kFramesPerMs, expected.maxMs);
    EXPECT_LT(static_cast<double>(longestGap) / kFramesPerMs, 100.0) << "the voice is freed early";
    EXPECT_EQ(level(frames - 1), 0.0f);
}

// The engine drops every second frame without a filter.
TEST_P(Recordings, DoesNotAliasAtHalfTheRate) {
    for (const Plane* channel : {&recording.left, &recording.right}) {
        const Signal high =
            highPassed(channel->frames(), 24330.0, 240.0); // it is brightest at the start
        const auto [lowest, highest] = std::ranges::minmax(high);
        EXPECT_LT(decibels(std::max(-lowest, highest)), -80.0);
    }
}

// At full volume the engine adds the voices and clips. The loudest four of a frame are its four
// highest or its four lowest samples.
TEST(Kit, AnyFourTogetherStayBelowFullScale) {
    std::vector<Sample> kit;
    kit.reserve(kKit.size());
    for (const Expected& each : kKit) {
        kit.push_back(parseWave(bytesOf(each.name)).value());
    }
    std::array<float, kKit.size()> together{};
    for (std::size_t frame = 0; frame < kLong; ++frame) {
        for (const auto channel : {&Sample::left, &Sample::right}) {
            for (std::size_t voice = 0; voice < kit.size(); ++voice) {
                const Plane& sound = kit[voice].*channel;
                together[voice] = frame < sound.size() ? sound[frame] : 0.0f;
            }
            std::ranges::sort(together);
            ASSERT_LT(std::accumulate(together.end() - 4, together.end(), 0.0f), 1.0f) << frame;
            ASSERT_GT(std::accumulate(together.begin(), together.begin() + 4, 0.0f), -1.0f)
                << frame;
        }
    }
}

// One recording of each kind of source, without the others and in a different order.
TEST(MakeRecordings, IsDeterministicAndRefusesUnknownNames) {
    const OwnFolder folder;
    const auto run = [&](const std::string& names) {
        const std::string tool = PERCUSSOMATIC_MAKE_RECORDINGS;
        return std::system(('"' + tool + "\" made " + names + " 2>/dev/null").c_str());
    };
    EXPECT_NE(run("block_1 cowbell"), 0);
    EXPECT_FALSE(std::filesystem::exists("made"));
    EXPECT_EQ(run("triangle rolling_snare charleston block_1"), 0);
    EXPECT_EQ(filesIn("made"), 4);
    for (const std::string name : {"triangle", "rolling_snare", "charleston", "block_1"}) {
        const std::string written = contents("made/" + name + ".wav");
        EXPECT_TRUE(std::ranges::equal(std::as_bytes(std::span(written)), bytesOf(name))) << name;
    }
}

} // namespace
} // namespace percussomatic
