#include "audio/sound_engine.h"
#include "support/plain_engine.h"
#include "support/plain_reverb.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <random>

namespace percussomatic {
namespace {

// std::mt19937 gives the same numbers everywhere; the library's distributions do not.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : generator_(seed) {}

    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(generator_()) % limit;
    }
    bool oneIn(std::uint32_t chances) { return below(chances) == 0; }
    float between(float low, float high) {
        return low + (high - low) * static_cast<float>(below(1U << 24)) / 0x1p24f;
    }

private:
    std::mt19937 generator_;
};

struct Recording {
    std::uint32_t rateHz;
    std::uint32_t frames;
    std::uint16_t channels;
    std::uint32_t soundingFrames; // the rest is silent
};

constexpr Recording kRecordings[] = {
    {96000, 20000, 2, 20000}, {96000, 46500, 2, 3000},    {48000, 9000, 1, 9000},
    {44100, 12000, 2, 8000},  {8000, 700, 2, 700},        {96000, 1, 2, 1},
    {11025, 2, 1, 2},         {1000000, 50000, 2, 50000}, {1, 3, 2, 2},
    {192000, 30000, 2, 0},    {47999, 5000, 2, 5000},     {22050, 6000, 1, 900},
};

Bytes noise(const Recording& recording, Dice& dice) {
    using Limits = std::numeric_limits<float>;
    const float kOdd[] = {
        1.0f, -1.0f, 1.5f, 1e-40f, Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()};
    std::vector<float> values(std::size_t{recording.frames} * recording.channels);
    for (std::size_t i = 0; i < std::size_t{recording.soundingFrames} * recording.channels; ++i) {
        const bool inHole = i / 6000 % 3 == 1; // long enough for the auto-stop
        values[i] = dice.oneIn(100) ? kOdd[dice.below(std::size(kOdd))]
                    : inHole        ? dice.between(-1e-5f, 1e-5f)
                                    : dice.between(-1.0f, 1.0f);
    }
    return WaveBuilder()
        .format(
            {.tag = 3, .channels = recording.channels, .sampleRate = recording.rateHz, .bits = 32})
        .floats(values)
        .bytes();
}

// A random turn of a control or two, the same on both engines.
template <typename Both>
void turnAControl(Dice& dice, const Both& both) {
    const auto amount = [&dice] { return dice.between(-0.1f, 1.1f); };
    const float first = amount(), second = amount(), third = amount(), fourth = amount();
    const std::uint32_t send = dice.below(34), holdMs = dice.below(120), minMs = dice.below(60);
    const float preDelayMs = dice.oneIn(4) ? 0.0f : dice.between(-20.0f, 300.0f);
    const bool flag = !dice.oneIn(4);
    const std::uint32_t choice = dice.below(8);
    both([=](auto& engine) {
        switch (choice) {
        case 0:
            engine.setMasterVolume(first);
            engine.setEffectEnabled(flag);
            break;
        case 1:
            engine.setEffectPreset(static_cast<std::int32_t>(holdMs % 8) - 1);
            break;
        case 2:
            engine.setEffectReturn(first);
            engine.setEffectRoomSize(second);
            engine.setEffectDamping(third);
            engine.setEffectWidth(fourth);
            engine.setEffectPreDelayMs(preDelayMs);
            break;
        case 3:
            engine.setAutoStop(flag, 1e-4f * first, holdMs, minMs);
            break;
        default:
            engine.setSend(send, first);
        }
    });
}

class RenderEquality : public testing::TestWithParam<std::uint32_t> {};

TEST_P(RenderEquality, EngineMatchesThePlainOneToTheBit) {
    Dice dice(GetParam());
    SoundEngine engine;
    plain::PlainEngine plainEngine;
    const auto both = [&](const auto& operation) {
        operation(engine);
        operation(plainEngine);
    };
    for (const Recording& recording : kRecordings) {
        const Bytes file = noise(recording, dice);
        ASSERT_GE(engine.loadSample(file.data(), file.size()), 0);
    }
    plainEngine.samples = engine.samples;
    both([](auto& it) { it.prepareForDevice(); });
    both([](auto& it) { it.setEffectEnabled(true); });

    std::size_t busiest = 0;
    for (int block = 0; block < 250; ++block) {
        SCOPED_TRACE(testing::Message() << "block " << block);
        // Now and then a burst that overfills the pool.
        const std::uint32_t triggers = dice.oneIn(25) ? 70 : dice.below(5);
        for (std::uint32_t i = 0; i < triggers; ++i) {
            const auto index = static_cast<std::int32_t>(dice.below(14)) - 1;
            const float gain = dice.oneIn(20) ? dice.between(-1.0f, 8.0f) : dice.between(0, 0.3f);
            both([=](auto& it) { it.trigger(index, gain); });
        }
        for (std::uint32_t i = dice.below(3); i > 0; --i) {
            turnAControl(dice, both);
        }
        if (dice.oneIn(40)) {
            both([](auto& it) { it.stopAllVoicesRequest = true; });
        }
        const bool muted = dice.oneIn(15);
        both([=](auto& it) { it.outputMuted = muted; });

        const std::uint32_t frames = 1 + dice.below(dice.oneIn(3) ? 700 : 200);
        std::vector<std::int16_t> out(std::size_t{frames} * 2 + 1, 0x5A5A);
        std::vector<std::int16_t> expected = out;
        engine.renderBlock(out.data(), frames);
        plainEngine.renderBlock(expected.data(), frames);
        ASSERT_EQ(out, expected);

        std::size_t busy = 0;
        for (std::size_t slot = 0; slot < kVoiceCount; ++slot) {
            const Voice& voice = engine.voices[slot];
            const plain::PlainEngine::Voice& plainVoice = plainEngine.voices[slot];
            ASSERT_EQ(voice.active, plainVoice.active) << "voice " << slot;
            ASSERT_EQ(voice.position, plainVoice.position) << "voice " << slot;
            ASSERT_EQ(voice.silentFrames, plainVoice.silentFrames) << "voice " << slot;
            busy += voice.active ? 1 : 0;
        }
        busiest = std::max(busiest, busy);
    }
    EXPECT_EQ(busiest, kVoiceCount);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RenderEquality, testing::Values(1U, 2U, 3U));

TEST(ReverbEquality, EveryFrameMatchesThePlainOneToTheBit) {
    Dice dice(4);
    for (const double rateHz : {48000.0, 44100.0, 96000.5, 0.0}) {
        SCOPED_TRACE(rateHz);
        lumivarda::dsp::Plate70Reverb reverb;
        plain::PlainReverb plainReverb;
        reverb.prepare(rateHz);
        plainReverb.prepare(rateHz);
        for (int frame = 0; frame < 20000; ++frame) {
            if (frame % 1500 == 0) {
                reverb.roomSize = plainReverb.roomSize = dice.between(0.0f, 1.0f);
                reverb.damping = plainReverb.damping = dice.between(0.0f, 1.0f);
                reverb.width = plainReverb.width = dice.between(0.0f, 1.0f);
                reverb.preDelayMs = plainReverb.preDelayMs = dice.between(-10.0f, 240.0f);
                plainReverb.wet = dice.between(0.0f, 1.0f);
                reverb.setWet(plainReverb.wet);
            }
            if (frame == 12000) {
                reverb.reset();
                plainReverb.reset();
            }
            const bool silent = frame % 4000 > 3000;
            const float left = silent ? 0.0f : dice.between(-4.0f, 4.0f);
            const float right = silent ? 0.0f : dice.between(-4.0f, 4.0f);
            const auto out = reverb.process(left, right);
            const auto expected = plainReverb.process(left, right);
            ASSERT_EQ(std::bit_cast<std::uint32_t>(out.left),
                      std::bit_cast<std::uint32_t>(expected.left));
            ASSERT_EQ(std::bit_cast<std::uint32_t>(out.right),
                      std::bit_cast<std::uint32_t>(expected.right));
        }
    }
}

} // namespace
} // namespace percussomatic
