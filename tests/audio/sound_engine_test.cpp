#include "audio/sound_engine.h"
#include "support/counting_new.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace percussomatic {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

class SoundEngineTest : public testing::Test {
protected:
    SoundEngineTest() { engine.prepareForDevice(); }

    std::int32_t load(const std::vector<float>& frames, std::uint32_t rateHz = 48000) {
        engine.samples.push_back({rateHz, frames, frames, true});
        return static_cast<std::int32_t>(engine.samples.size()) - 1;
    }

    std::vector<std::int16_t> render(std::uint32_t frames) {
        std::vector<std::int16_t> out(std::size_t{frames} * 2, 0x5555);
        engine.renderBlock(out.data(), frames);
        return out;
    }

    std::ptrdiff_t activeVoices() const {
        return std::count_if(engine.voices.begin(), engine.voices.end(),
                             [](const Voice& voice) { return voice.active; });
    }

    SoundEngine engine;
};

TEST_F(SoundEngineTest, RejectedFilesTakeNoIndex) {
    const Bytes file = WaveBuilder().format({}).values16({1, 2}).bytes();
    EXPECT_EQ(engine.loadSample(file.data(), file.size()), 0);
    EXPECT_EQ(engine.loadSample(nullptr, file.size()), -1);
    EXPECT_EQ(engine.loadSample(file.data(), file.size() - 1), -1);
    EXPECT_EQ(engine.loadSample(file.data(), file.size()), 1);
}

TEST_F(SoundEngineTest, AutoStopCountsFrames) {
    const struct {
        const char* what;
        std::uint32_t loudFrames;
        float quietLevel;
        float threshold;
        std::uint32_t holdMs;
        std::uint32_t minMs;
        std::uint32_t expectedFrames; // 9000 is the whole recording
    } cases[] = {
        {"silent from the start", 0, 0.0f, 1e-5f, 100, 50, 4800},
        {"hold counts from the last loud frame", 1000, 0.0f, 1e-5f, 100, 50, 5800},
        {"minimum play outlasts the hold", 0, 0.0f, 1e-5f, 1, 50, 2400},
        {"threshold is inclusive", 10, 0.25f, 0.25f, 10, 5, 490},
        {"just above the threshold", 10, 0.25f, 0.2499f, 10, 5, 9000},
        {"zero times need one frame", 3, 0.0f, 0.0f, 0, 0, 4},
        {"a hold whose frames times 1000 pass 32 bits", 0, 0.0f, 1.0f, 89479, 50, 9000},
    };
    for (const auto& [what, loudFrames, quietLevel, threshold, holdMs, minMs, expected] : cases) {
        SCOPED_TRACE(what);
        std::vector<float> frames(9000, quietLevel);
        std::fill_n(frames.begin(), loudFrames, -0.5f);
        const std::int32_t index = load(frames);
        engine.setAutoStop(true, threshold, holdMs, minMs);
        engine.trigger(index, 100.0f); // the gain plays no part
        render(expected - 1);
        EXPECT_EQ(activeVoices(), 1);
        render(2);
        EXPECT_EQ(activeVoices(), 0);
        EXPECT_EQ(engine.voices[0].playedFrames, expected);
    }
}

TEST_F(SoundEngineTest, OutputIsClampedAndTruncated) {
    const struct {
        float value;
        float gain;
        std::int16_t expected;
    } cases[] = {
        {1.0f, 2.0f, 32767},        {-1.0f, 2.0f, -32767}, {-1.0f, 1.0f, -32767},
        {0.5f, 1.0f, 16383},        {-0.5f, 1.0f, -16383}, {1.0f, 3.0e38f, 32767},
        {-1.0f, kInfinity, -32767}, {0.0f, kInfinity, 0},
    };
    for (const auto& [value, gain, expected] : cases) {
        SCOPED_TRACE(testing::Message() << value << " x " << gain);
        engine.trigger(load({value}), gain);
        EXPECT_EQ(render(1), (std::vector<std::int16_t>{expected, expected}));
        render(1);
    }
}

TEST_F(SoundEngineTest, RenderAllocatesNothing) {
    load(std::vector<float>(20000, 0.25f), 44100);
    engine.setSend(0, 0.5f);
    engine.setEffectEnabled(true);
    for (std::size_t i = 0; i < kVoiceCount; ++i) {
        engine.trigger(0, 0.1f);
    }
    std::vector<std::int16_t> out(16384);
    const std::size_t before = allocationCount();
    for (const std::uint32_t frames : {512U, 1U, 8192U}) {
        engine.renderBlock(out.data(), frames);
    }
    engine.stopAllVoicesRequest = 1;
    engine.renderBlock(out.data(), 512);
    engine.outputMuted = 1;
    engine.renderBlock(out.data(), 512);
    EXPECT_EQ(allocationCount(), before);
    EXPECT_GT(before, 0U) << "the count does not count";
}

} // namespace
} // namespace percussomatic
