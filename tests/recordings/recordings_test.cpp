#include "measures.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <numeric>
#include <ostream>
#include <string>
#include <unistd.h>

namespace recordings_test {
namespace {

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
    Range centroidHz;
    Range t60Ms;
    Range silentAfterMs;
    Range correlation; // of the two channels
    double pitchHz;    // strongest partial; 0 where there is none worth the name
};

void PrintTo(const Expected& expected, std::ostream* out) {
    *out << expected.name;
}

constexpr std::size_t kLong = 960000;
constexpr std::size_t kShort = 46500;

constexpr std::array<Expected, 12> kExpected = {{
    {"bass_drum", kShort, -10.5, {58, 85}, {330, 380}, {430, 470}, {0.999, 1}, 57},
    {"block_1", kShort, -10.0, {1050, 1250}, {80, 110}, {120, 200}, {0.97, 0.9999}, 1080},
    {"block_2", kShort, -10.0, {640, 740}, {110, 145}, {160, 260}, {0.97, 0.9999}, 640},
    {"charleston", kLong, -12.0, {9000, 10800}, {210, 270}, {300, 450}, {0.8, 0.95}, 0},
    {"clave", kLong, -12.5, {2550, 2850}, {130, 170}, {180, 300}, {0.97, 0.9999}, 2520},
    {"cymbal_1", kLong, -11.2, {7200, 9200}, {2900, 3500}, {4000, 6000}, {0.65, 0.85}, 0},
    {"cymbal_2", kLong, -14.5, {7500, 9000}, {1200, 1500}, {1700, 2600}, {0.7, 0.9}, 0},
    {"rolling_snare", kLong, -14.5, {3700, 5000}, {800, 1100}, {1000, 1400}, {0.9, 0.98}, 187},
    {"snare", kLong, -10.0, {2800, 3900}, {240, 300}, {400, 600}, {0.9, 0.98}, 187},
    {"timbal_1", kShort, -11.5, {430, 520}, {270, 310}, {400, 480}, {0.97, 0.9999}, 392},
    {"timbal_2", kLong, -12.5, {270, 340}, {550, 670}, {800, 1100}, {0.97, 0.9999}, 247},
    {"triangle", kLong, -14.5, {5500, 7000}, {2400, 3000}, {3000, 4500}, {0.95, 0.9999}, 5840},
}};

std::filesystem::path pathOf(const std::string& name) {
    return std::filesystem::path(PERCUSSOMATIC_RECORDINGS_DIR) / (name + ".wav");
}

class Recordings : public testing::TestWithParam<Expected> {
protected:
    const Recording recording{pathOf(GetParam().name)};

    void SetUp() override { ASSERT_EQ(recording.frames(), GetParam().frames); }
};

INSTANTIATE_TEST_SUITE_P(Kit, Recordings, testing::ValuesIn(kExpected),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(Recordings, IsA24BitStereoWaveFileOfItsLength) {
    const auto audioBytes = static_cast<std::uint32_t>(GetParam().frames * 6);
    // RIFF, WAVE, fmt and data are written as numbers.
    const std::array<std::uint32_t, kHeaderBytes / 4> header = {
        0x46464952, 36 + audioBytes, 0x45564157,   0x20746d66, 16,        1 | 2 << 16,
        96000,      576000,          6 | 24 << 16, 0x61746164, audioBytes};
    ASSERT_EQ(recording.bytes.size(), kHeaderBytes + audioBytes);
    EXPECT_EQ(std::memcmp(recording.bytes.data(), header.data(), kHeaderBytes), 0);
}

// Steps that coincide stay together only if every recording starts at the same time.
TEST_P(Recordings, HasItsLevelNoOffsetAndTheCommonStart) {
    EXPECT_NEAR(decibels(recording.peak()), GetParam().peakDb, 0.3);
    const auto frames = static_cast<double>(recording.frames());
    for (const Signal* channel : {&recording.left, &recording.right}) {
        EXPECT_NEAR(std::accumulate(channel->begin(), channel->end(), 0.0) / frames, 0.0, 1e-7);
    }
    EXPECT_EQ(recording.level(0), 0.0F);
    const float peak = recording.peak();
    std::size_t onset = 0;
    while (recording.level(onset) < 0.05F * peak) {
        ++onset;
    }
    expectWithin("onset ms", static_cast<double>(onset) / kFramesPerMs, {0.7, 1.3});
    EXPECT_LT(recording.level(24), 0.001F * peak) << "click before the onset";
}

TEST_P(Recordings, FadesOnceAndForGood) {
    std::size_t lastLoud = 0;
    std::size_t longestGap = 0;
    // Every second frame, which is what the player hears.
    for (std::size_t frame = 0; frame < recording.frames(); frame += 2) {
        if (recording.level(frame) > kSilence) {
            longestGap = std::max(longestGap, frame - lastLoud);
            lastLoud = frame;
        }
    }
    expectWithin("silent after ms", static_cast<double>(lastLoud) / kFramesPerMs,
                 GetParam().silentAfterMs);
    EXPECT_LT(static_cast<double>(longestGap) / kFramesPerMs, 100.0) << "freed in its middle";
    EXPECT_EQ(recording.level(recording.frames() - 1), 0.0F);
}

TEST_P(Recordings, IsStereoThatMonoListenersCanTrust) {
    const double left = dot(recording.left, recording.left);
    const double right = dot(recording.right, recording.right);
    expectWithin("correlation", dot(recording.left, recording.right) / std::sqrt(left * right),
                 GetParam().correlation);
    EXPECT_NE(recording.left, recording.right);
    expectWithin("left to right dB", 0.5 * decibels(left / right), {-0.6, 0.6});
    const double mono = dot(recording.mid, recording.mid);
    EXPECT_GT(0.5 * decibels(2.0 * mono / (left + right)), -0.6) << "lost in mono";
}

TEST_P(Recordings, HasItsCharacter) {
    const double endMs = GetParam().silentAfterMs.high;
    const Spectrum whole(recording.mid, 0.0, endMs);
    expectWithin("centroid Hz", whole.centroidHz(), GetParam().centroidHz);
    expectWithin("T60 ms", t60Ms(recording.mid), GetParam().t60Ms);
    if (GetParam().pitchHz > 0.0) {
        const Spectrum fine(recording.mid, 0.0, endMs, 16384); // bins of 6 Hz
        EXPECT_NEAR(fine.strongestHz(), GetParam().pitchHz, 6.0 + 0.02 * GetParam().pitchHz);
    }
}

// The player halves the rate by dropping every second frame, without a filter.
TEST_P(Recordings, HasNothingThatFoldsAtHalfTheRate) {
    for (const Signal* channel : {&recording.left, &recording.right}) {
        const Spectrum spectrum(*channel, 0.0, 480.0); // brightest at the start
        EXPECT_LT(0.5 * decibels(spectrum.powerBetween(24000.0, kRateHz / 2.0) /
                                 spectrum.powerBetween(0.0, 24000.0)),
                  -80.0);
    }
}

TEST(Kit, CymbalsLoseTheirTopFirstAndSnareItsBody) {
    struct Moment {
        double ms;
        Range centroidHz;
    };
    const struct {
        const char* name;
        std::vector<Moment> moments;
    } cases[] = {
        {"cymbal_1", {{0, {8500, 11000}}, {200, {4500, 6000}}, {1600, {3200, 4500}}}},
        {"cymbal_2", {{0, {7500, 10000}}, {400, {4300, 6900}}, {1200, {4000, 5500}}}},
        {"charleston", {{0, {9000, 11000}}, {200, {9000, 11000}}}},
        {"triangle", {{0, {5800, 7200}}, {1600, {3700, 5200}}}},
        {"snare", {{0, {2500, 3700}}, {100, {5800, 7500}}}},
    };
    for (const auto& [name, moments] : cases) {
        SCOPED_TRACE(name);
        const Signal sound = Recording(pathOf(name)).mid;
        for (const Moment& moment : moments) {
            const Spectrum there(sound, moment.ms, moment.ms + 60.0);
            expectWithin("centroid Hz", there.centroidHz(), moment.centroidHz);
        }
    }
}

// At full sliders and full master the mixer adds singles and clips at full scale. The loudest of
// all sets of four is at every frame the four highest or the four lowest.
TEST(Kit, AnyFourTogetherStayBelowFullScale) {
    std::vector<Recording> kit;
    kit.reserve(kExpected.size());
    for (const Expected& expected : kExpected) {
        kit.emplace_back(pathOf(expected.name));
    }
    for (std::size_t frame = 0; frame < kLong; ++frame) {
        for (const auto channel : {&Recording::left, &Recording::right}) {
            std::array<float, kExpected.size()> together{};
            for (std::size_t voice = 0; voice < kit.size(); ++voice) {
                together[voice] = frame < kit[voice].frames() ? (kit[voice].*channel)[frame] : 0.0F;
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
        EXPECT_EQ(readBytes(folder / (name + ".wav")), readBytes(pathOf(name))) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "snare.wav"));
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace recordings_test
