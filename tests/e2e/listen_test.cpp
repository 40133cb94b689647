#include "listen_match.h"
#include "listen_recording.h"
#include "listen_replay.h"

#include "audio/sound_engine.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

using listen::Block;
using percussomatic::SoundEngine;

constexpr std::uint32_t kFrames = 512;

// Clicks that ring for a tenth of a second, each sample with a tone of its own.
void loadClicks(SoundEngine& engine, int count) {
    for (int click = 0; click < count; ++click) {
        std::vector<float> values(4800);
        for (std::size_t frame = 0; frame < values.size(); ++frame) {
            const auto at = static_cast<float>(frame);
            values[frame] =
                0.5f * std::exp(-at / 700.0f) * std::sin(at * static_cast<float>(click + 2) * 0.1f);
        }
        const auto wave =
            percussomatic::WaveBuilder().format({.tag = 3, .bits = 32}).floats(values).bytes();
        ASSERT_EQ(engine.loadSample(wave.data(), wave.size()), click);
    }
}

std::vector<Block> render(SoundEngine& engine, std::size_t blocks,
                          const std::multimap<std::size_t, listen::Trigger>& triggers) {
    std::vector<Block> recording;
    for (std::size_t block = 0; block < blocks; ++block) {
        const auto [first, last] = triggers.equal_range(block);
        for (auto at = first; at != last; ++at) {
            engine.trigger(at->second.sampleIndex, at->second.gain);
        }
        Block& rendered = recording.emplace_back();
        rendered.head.frames = kFrames;
        rendered.samples.resize(std::size_t{kFrames} * 2);
        engine.renderBlock(rendered.samples.data(), kFrames);
    }
    return recording;
}

class ReplayTest : public testing::Test {
protected:
    void SetUp() override {
        loadClicks(played, 3);
        loadClicks(listening, 3);
        played.setMasterVolume(0.25f);
        std::istringstream text("master 0.5\n"
                                "step 0:650 1:325 2:0  # a line that is turned down is no trigger\n"
                                "step\n"
                                "step 2:65\n");
        const auto read = listen::readScenario(text);
        ASSERT_TRUE(read);
        scenario = *read;
    }

    SoundEngine played, listening;
    listen::Scenario scenario;
};

TEST_F(ReplayTest, FindsTheBlockOfEveryTriggerAndOfTheFirstWrongFrame) {
    std::vector<Block> recording = render(played, 40,
                                          {{3, {0, 1.0f}},
                                           {3, {1, 0.5f}},
                                           {9, {2, 0.1f}},
                                           {15, {0, 1.0f}},
                                           {16, {1, 0.5f}},
                                           {22, {2, 0.1f}}});
    const listen::Replay right = listen::replay(listening, recording, scenario);
    EXPECT_FALSE(right.difference);
    EXPECT_FALSE(right.ambiguous);
    const std::vector<std::array<std::size_t, 3>> expected = {
        {0, 3, 3}, {2, 9, 9}, {3, 15, 16}, {5, 22, 22}};
    ASSERT_EQ(right.hits.size(), expected.size());
    for (std::size_t hit = 0; hit < expected.size(); ++hit) {
        const listen::Hit& found = right.hits[hit];
        EXPECT_EQ((std::array{found.step, found.firstBlock, found.lastBlock}), expected[hit]);
    }

    recording[17].samples[2 * 100 + 1] ^= 1;
    const listen::Replay wrong = listen::replay(listening, recording, scenario);
    ASSERT_TRUE(wrong.difference);
    EXPECT_EQ(wrong.difference->block, 17u);
    EXPECT_EQ(wrong.difference->frame, 100u);
}

TEST_F(ReplayTest, MissesAStepThatIsLeftOutOrWrong) {
    struct Case {
        const char* name;
        std::multimap<std::size_t, listen::Trigger> triggers;
        std::size_t block;
    };
    const Case cases[] = {
        {"a step skipped", {{3, {0, 1.0f}}, {3, {1, 0.5f}}, {9, {0, 1.0f}}}, 9},
        {"half a step", {{3, {0, 1.0f}}, {9, {2, 0.1f}}}, 9},
        {"another gain", {{3, {0, 1.0f}}, {3, {1, 0.51f}}, {9, {2, 0.1f}}}, 3},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        played.deactivateAllVoices();
        const auto result = listen::replay(listening, render(played, 20, each.triggers), scenario);
        ASSERT_TRUE(result.difference);
        EXPECT_EQ(result.difference->block, each.block);
    }
}

TEST_F(ReplayTest, AcceptsReopeningAndPowerOff) {
    std::vector<Block> recording = render(played, 5, {{3, {0, 1.0f}}, {3, {1, 0.5f}}});
    recording.emplace_back(); // opened again
    played.deactivateAllVoices();
    const std::vector<Block> after = render(played, 5, {{2, {2, 0.1f}}});
    recording.insert(recording.end(), after.begin(), after.end());
    played.outputMuted = 1;
    const std::vector<Block> off = render(played, 5, {});
    recording.insert(recording.end(), off.begin(), off.end());

    const listen::Replay result = listen::replay(listening, recording, scenario);
    EXPECT_FALSE(result.difference);
    EXPECT_EQ(result.hits.size(), 2u);
    EXPECT_EQ(result.muted, 11u);
}

TEST(RecordingTest, ReadsUpToAnEntryThatIsCutOff) {
    const auto path = std::filesystem::path(testing::TempDir()) / "listen_test.bin";
    std::string bytes(2 * listen::kBlockHeadBytes + 3 * listen::kFrameBytes, '\0');
    bytes[listen::kBlockHeadBytes + 8] = 7;  // when the second begins
    bytes[listen::kBlockHeadBytes + 16] = 3; // its frames
    bytes.back() = 1;
    std::ofstream(path, std::ios::binary) << bytes << bytes.substr(0, bytes.size() - 1);
    const auto blocks = listen::readRecording(path);
    std::filesystem::remove(path);
    ASSERT_TRUE(blocks);
    ASSERT_EQ(blocks->size(), 3u);
    EXPECT_EQ((*blocks)[1].head.startsNs, 7);
    EXPECT_EQ((*blocks)[1].samples, (std::vector<std::int16_t>{0, 0, 0, 0, 0, 256}));
    EXPECT_FALSE(listen::readRecording(path));
}

TEST(MatchTest, FindsHitsToTheFrameOverTheTailsBefore) {
    SoundEngine engine;
    loadClicks(engine, 1);
    const percussomatic::Sample& click = engine.samples.front();
    std::vector<std::int16_t> capture(2 * 48000);
    const std::vector<std::size_t> places = {1000, 4001, 7003, 30000, 43001};
    for (const std::size_t place : places) {
        for (std::size_t frame = 0; frame < click.left.size(); ++frame) {
            for (const std::size_t channel : {0U, 1U}) {
                std::int16_t& sample = capture[2 * (place + frame) + channel];
                sample = static_cast<std::int16_t>(static_cast<float>(sample) +
                                                   click.left[frame] * 20000.0f);
            }
        }
    }
    std::vector<std::size_t> found;
    for (const listen::Found& hit : listen::findHits(capture, click, 0.6)) {
        found.push_back(hit.frame);
        EXPECT_NEAR(hit.gain, 20000.0 / 32767.0, 0.01);
    }
    EXPECT_EQ(found, places);
    EXPECT_TRUE(listen::findHits(capture, click, 1.3).empty()); // all too quiet
}

} // namespace
