#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "support/counting_new.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace percussomatic {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class SoundEngineTest : public testing::Test {
protected:
    SoundEngineTest() { engine.prepareForDevice(); }

    std::int32_t load(const std::vector<float>& frames, std::uint32_t rateHz = 48000) {
        const Bytes file = WaveBuilder()
                               .format({.tag = 3, .sampleRate = rateHz, .bits = 32})
                               .floats(frames)
                               .bytes();
        return engine.loadSample(file.data(), file.size());
    }

    std::vector<std::int16_t> render(std::uint32_t frames) {
        std::vector<std::int16_t> out(std::size_t{frames} * 2, 0x5555);
        engine.renderBlock(out.data(), frames);
        return out;
    }

    std::size_t activeVoices() const {
        return static_cast<std::size_t>(
            std::count_if(engine.voices.begin(), engine.voices.end(),
                          [](const Voice& voice) { return voice.active; }));
    }

    static bool isSilent(const std::vector<std::int16_t>& out) {
        return std::count(out.begin(), out.end(), 0) == static_cast<std::ptrdiff_t>(out.size());
    }

    SoundEngine engine;
};

TEST_F(SoundEngineTest, RejectedFilesTakeNoIndex) {
    EXPECT_EQ(load({0.5f, 0.5f}), 0);
    EXPECT_EQ(engine.loadSample(nullptr, 0), -1);
    EXPECT_EQ(engine.loadSample(nullptr, 100), -1);
    EXPECT_EQ(load({}), -1);
    EXPECT_EQ(load({0.5f}), 1);
}

TEST_F(SoundEngineTest, FirstIdleVoiceIsTakenAndVoice0WhenAllAreBusy) {
    load(std::vector<float>(100, 0.5f));
    load(std::vector<float>(100, 0.25f));
    for (std::size_t i = 0; i < kVoiceCount; ++i) {
        engine.trigger(0, 1.0f);
    }
    render(10);
    engine.trigger(1, 0.5f);
    EXPECT_EQ(engine.voices[0].sampleIndex, 1);
    EXPECT_EQ(engine.voices[0].position, 0.0);
    EXPECT_EQ(engine.voices[0].gain, 0.5f);
    EXPECT_EQ(engine.voices[0].playedFrames, 0U);
    for (std::size_t slot = 1; slot < kVoiceCount; ++slot) {
        EXPECT_EQ(engine.voices[slot].sampleIndex, 0);
        EXPECT_EQ(engine.voices[slot].position, 10.0);
    }
    engine.voices[7].active = false;
    engine.trigger(1, 1.0f);
    EXPECT_EQ(engine.voices[7].sampleIndex, 1);
    EXPECT_EQ(engine.voices[0].gain, 0.5f);
}

TEST_F(SoundEngineTest, NegativeGainIsInaudibleButHoldsItsVoice) {
    load(std::vector<float>(200, 0.9f));
    engine.trigger(0, -0.5f);
    engine.trigger(0, kNan);
    EXPECT_TRUE(isSilent(render(100)));
    EXPECT_EQ(activeVoices(), 2U);
}

TEST_F(SoundEngineTest, VoiceEndsWithItsRecording) {
    load(std::vector<float>(46500, 0.5f), 96000);
    engine.trigger(0, 1.0f);
    const auto out = render(23260);
    EXPECT_EQ(out[46498], 16383);
    EXPECT_EQ(out[46500], 0);
    EXPECT_EQ(engine.voices[0].playedFrames, 23250U);
    EXPECT_EQ(activeVoices(), 0U);
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
        EXPECT_EQ(activeVoices(), 1U);
        render(2);
        EXPECT_EQ(activeVoices(), 0U);
        EXPECT_EQ(engine.voices[0].playedFrames, expected);
    }
}

TEST_F(SoundEngineTest, AutoStopNeedsBothSidesSilentAndCanBeOff) {
    std::vector<float> frames(10000, 0.0f); // interleaved
    for (std::size_t i = 1; i < frames.size(); i += 2) {
        frames[i] = 0.01f;
    }
    const Bytes file =
        WaveBuilder().format({.tag = 3, .channels = 2, .bits = 32}).floats(frames).bytes();
    engine.loadSample(file.data(), file.size());
    load(std::vector<float>(5000));
    engine.setAutoStop(true, 1e-5f, 10, 5);
    engine.trigger(0, 1.0f);
    render(4999);
    EXPECT_EQ(activeVoices(), 1U);
    engine.setAutoStop(false, 1e-5f, 10, 5);
    engine.trigger(1, 1.0f);
    render(4999);
    EXPECT_EQ(activeVoices(), 1U);
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

TEST_F(SoundEngineTest, MutedOutputFreezesTheTailAndDropsTriggers) {
    load({1.0f, 1.0f, 1.0f});
    engine.setSend(0, 1.0f);
    engine.setEffectPreset(4);
    engine.setEffectEnabled(true);
    engine.trigger(0, 1.0f);
    render(4000);
    const auto tailBefore = engine.reverb.combs;
    engine.outputMuted = 1;
    engine.trigger(0, 1.0f);
    EXPECT_TRUE(isSilent(render(2000)));
    EXPECT_EQ(activeVoices(), 0U);
    EXPECT_EQ(engine.reverb.combs[0][0].buffer, tailBefore[0][0].buffer);
    EXPECT_EQ(engine.reverb.combs[0][0].index, tailBefore[0][0].index);
    engine.outputMuted = 0;
    EXPECT_FALSE(isSilent(render(2000)));
}

TEST_F(SoundEngineTest, StopRequestIsConsumedOnceEvenWhenMuted) {
    load(std::vector<float>(1000, 0.5f));
    for (const bool muted : {false, true}) {
        engine.trigger(0, 1.0f);
        render(10);
        engine.outputMuted = muted ? 1 : 0;
        engine.stopAllVoicesRequest = 1;
        EXPECT_TRUE(isSilent(render(10)));
        EXPECT_EQ(engine.voices[0].sampleIndex, -1);
        EXPECT_EQ(engine.voices[0].gain, 0.0f);
        engine.outputMuted = 0;
        engine.trigger(0, 1.0f);
        EXPECT_FALSE(isSilent(render(10)));
        engine.deactivateAllVoices();
        EXPECT_EQ(activeVoices(), 0U);
    }
}

TEST_F(SoundEngineTest, SendsFeedOnlyTheReverb) {
    load(std::vector<float>(20000, 0.25f));
    const auto play = [this](bool effect, std::uint32_t sendIndex) {
        engine.setSend(0, 0.0f);
        engine.setSend(sendIndex, 1.0f);
        engine.setEffectEnabled(false);
        engine.setEffectEnabled(effect);
        engine.deactivateAllVoices();
        engine.trigger(0, 1.0f);
        return render(12000);
    };
    const std::vector<std::int16_t> dry(24000, 8191);
    EXPECT_EQ(play(false, 0), dry);
    EXPECT_EQ(play(true, 32), dry);
    EXPECT_EQ(play(true, 11), dry);
    const auto wet = play(true, 0);
    EXPECT_TRUE(std::equal(wet.begin(), wet.begin() + 2000, dry.begin()));
    EXPECT_NE(wet, dry);
    EXPECT_EQ(engine.getSend(0), 1.0f);
    EXPECT_EQ(engine.getSend(32), 0.0f);
}

TEST_F(SoundEngineTest, PresetsReachEngineAndReverb) {
    const struct {
        std::int32_t preset;
        std::int32_t applied;
        float values[5]; // return, room size, damping, width, pre-delay ms
    } cases[] = {
        {-3, 0, {0.20f, 0.42f, 0.58f, 0.92f, 5.0f}}, {1, 1, {0.24f, 0.62f, 0.48f, 1.00f, 10.0f}},
        {2, 2, {0.16f, 0.28f, 0.66f, 0.78f, 2.0f}},  {3, 3, {0.30f, 0.82f, 0.38f, 1.00f, 18.0f}},
        {4, 4, {0.34f, 0.92f, 0.42f, 1.00f, 26.0f}}, {9, 5, {0.38f, 0.97f, 0.58f, 0.88f, 32.0f}},
    };
    engine.effectExtra1 = 3.0f;
    for (const auto& [preset, applied, values] : cases) {
        SCOPED_TRACE(preset);
        engine.reverb.wet = 0.1f;
        engine.setEffectPreset(preset);
        EXPECT_EQ(engine.getEffectReturn(), values[0]);
        EXPECT_EQ(engine.getEffectRoomSize(), values[1]);
        EXPECT_EQ(engine.getEffectDamping(), values[2]);
        EXPECT_EQ(engine.getEffectWidth(), values[3]);
        EXPECT_EQ(engine.getEffectPreDelayMs(), values[4]);
        EXPECT_EQ(engine.reverb.presetIndex, applied);
        EXPECT_EQ(engine.reverb.feedback, values[1] * 0.28f + 0.7f);
        EXPECT_EQ(engine.reverb.damp1, values[2] * 0.4f);
        EXPECT_EQ(engine.reverb.wet1, 1.0f * 3.0f * 0.5f * (1.0f + values[3]));
        EXPECT_EQ(engine.reverb.preDelayMs, values[4]);
        EXPECT_EQ(engine.reverb.extra, (std::array{1.0f, 0.24f, 0.72f}));
    }
}

TEST_F(SoundEngineTest, SettersClampAndTheReverbFollows) {
    const struct {
        float value;
        float unit;
        float preDelayMs;
    } cases[] = {{-0.5f, 0.0f, 0.0f},
                 {0.75f, 0.75f, 0.75f},
                 {9.0f, 1.0f, 9.0f},
                 {900.0f, 1.0f, 200.0f},
                 {kNan, 0.0f, 0.0f}};
    for (const auto& [value, unit, preDelayMs] : cases) {
        SCOPED_TRACE(value);
        engine.setMasterVolume(value);
        engine.setSend(31, value);
        engine.setEffectReturn(value);
        engine.setEffectRoomSize(value);
        engine.setEffectDamping(value);
        engine.setEffectWidth(value);
        engine.setEffectPreDelayMs(value);
        EXPECT_EQ(engine.masterVolume, unit);
        EXPECT_EQ(engine.getSend(31), unit);
        EXPECT_EQ(engine.getEffectReturn(), unit);
        EXPECT_EQ(engine.getEffectRoomSize(), unit);
        EXPECT_EQ(engine.getEffectDamping(), unit);
        EXPECT_EQ(engine.getEffectWidth(), unit);
        EXPECT_EQ(engine.getEffectPreDelayMs(), preDelayMs);
        EXPECT_EQ(engine.reverb.preDelayMs, preDelayMs);
        EXPECT_EQ(engine.reverb.feedback, unit * 0.28f + 0.7f);
        EXPECT_EQ(engine.reverb.damp1, unit * 0.4f);
        EXPECT_EQ(engine.reverb.wet2, 1.5f * (1.0f - unit));
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
    const AllocationCount allocations;
    for (const std::uint32_t frames : {512U, 1U, 8192U}) {
        engine.renderBlock(out.data(), frames);
    }
    engine.stopAllVoicesRequest = 1;
    engine.renderBlock(out.data(), 512);
    engine.outputMuted = 1;
    engine.renderBlock(out.data(), 512);
    const std::size_t whileRendering = allocations.value();
    ::operator delete(::operator new(1));
    const std::size_t withOne = allocations.value();
    EXPECT_EQ(whileRendering, 0U);
    EXPECT_EQ(withOne, 1U) << "the count does not count";
}

TEST(EffectChoice, SkipsTheEnginePresetsWithoutAButton) {
    const struct {
        std::int32_t chosen;
        std::int32_t selected;
        std::int32_t enginePreset;
    } cases[] = {{-1, 0, 0}, {1, 1, 1}, {2, 2, 4}, {3, 3, 5}, {4, 3, 5}, {0, 0, 0}};
    for (const auto& [chosen, selected, enginePreset] : cases) {
        selectPreset(chosen);
        EXPECT_EQ(effectChoice().selectedPreset, selected);
        EXPECT_EQ(soundEngine().reverb.presetIndex, enginePreset);
    }
    selectPreset(2);
    resetEffectChoice();
    EXPECT_EQ(effectChoice().selectedPreset, 0);
    EXPECT_EQ(soundEngine().reverb.presetIndex, 4);
}

} // namespace
} // namespace percussomatic
