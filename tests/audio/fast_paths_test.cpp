#include "audio/sound_engine.h"
#include "support/plain_engine.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

// Where working in fours could part from working frame by frame: at the edges of fours,
// of recordings and of delay lines, and with numbers that are none.
namespace percussomatic {
namespace {

using Limits = std::numeric_limits<float>;

constexpr std::uint32_t kBlocks[] = {1, 3, 7, 64, 511, 512, 513, 1500};
constexpr std::uint32_t kRates[] = {96000, 96000, 48000, 44100, 88200, 192000, 24000, 47999};
constexpr float kOdd[] = {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), 1e-40f};
constexpr float kLevels[] = {1.0f, 2e-5f, 1e-5f, -0.0f}; // around the threshold

struct Dice {
    std::mt19937 generator;
    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(generator()) % limit;
    }
    bool oneIn(std::uint32_t chances) { return below(chances) == 0; }
    float upTo(float highest) { return highest * static_cast<float>(below(4097)) / 4096.0f; }
};

std::vector<float> plane(std::size_t frames, bool finite, Dice& dice) {
    std::vector<float> values(frames);
    float level = 1.0f;
    for (float& value : values) {
        level = dice.oneIn(150) ? kLevels[dice.below(4)] : level;
        value = !finite && dice.oneIn(700) ? kOdd[dice.below(4)] : level * (dice.upTo(2.0f) - 1.0f);
    }
    return values;
}

class FastMixer : public testing::TestWithParam<std::uint32_t> {};

TEST_P(FastMixer, MatchesThePlainOneToTheBit) {
    Dice dice{std::mt19937(GetParam())};
    const bool finite = GetParam() % 2 == 0; // what is not would ring in the effect for ever
    SoundEngine engine;
    plain::PlainEngine reference;
    const auto both = [&](const auto& operation) {
        operation(engine);
        operation(reference);
    };
    for (std::uint32_t i = 0; i < 40; ++i) {
        const std::size_t frames = 1 + dice.below(i < 8 ? 12 : 9000);
        const Sample sample{kRates[i % 8], plane(frames, finite, dice), plane(frames, finite, dice),
                            finite && i % 3 != 0};
        both([&](auto& it) { it.samples.push_back(sample); });
    }
    both([](auto& it) { it.prepareForDevice(); });
    for (int block = 0; block < 300; ++block) {
        SCOPED_TRACE(block);
        for (std::uint32_t i = dice.below(dice.oneIn(20) ? 65 : 6); i > 0; --i) {
            const auto index = static_cast<std::int32_t>(dice.below(40));
            const std::uint32_t slot = dice.below(kVoiceCount), silent = dice.below(1000);
            const float gain = dice.oneIn(9) && !finite ? Limits::infinity() : dice.upTo(0.5f);
            // Also where a trigger never leads: on odd frames, between frames, near the end.
            const auto end =
                static_cast<double>(reference.samples[static_cast<std::size_t>(index)].left.size());
            const double starts[] = {0.0, 0.5, 0.1, end - 8.0, end - 2.5};
            const double position = std::max(0.0, starts[dice.below(5)] + dice.below(9));
            both([=](auto& it) { it.voices[slot] = {index, position, gain, true, silent, 0}; });
        }
        const std::uint32_t send = dice.below(32), hold = dice.below(25), least = dice.below(30);
        const float amount = dice.upTo(1.0f);
        const float threshold = dice.oneIn(9) ? Limits::quiet_NaN() : dice.upTo(4e-5f);
        const bool autoStop = !dice.oneIn(5), effect = finite && !dice.oneIn(8);
        const bool muted = dice.oneIn(20), stopAll = dice.oneIn(40);
        const auto preset = static_cast<std::int32_t>(dice.below(6));
        const std::uint32_t frames = kBlocks[dice.below(std::size(kBlocks))];
        const auto rendered = [=](auto& it) {
            it.setSend(send, amount);
            it.setAutoStop(autoStop, threshold, hold, least);
            it.setEffectEnabled(effect);
            it.setEffectPreset(preset);
            it.outputMuted = muted;
            it.stopAllVoicesRequest = stopAll;
            std::vector<std::int16_t> mix(std::size_t{frames} * 2 + 8, 0x5A5A); // and no further
            it.renderBlock(mix.data(), frames);
            std::vector<double> voices;
            for (const auto& v : it.voices) {
                voices.insert(voices.end(), {v.active ? 1.0 : 0.0, v.position, 1.0 * v.silentFrames,
                                             1.0 * v.playedFrames});
            }
            return std::pair(mix, voices);
        };
        ASSERT_EQ(rendered(engine), rendered(reference));
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FastMixer, testing::Range(10U, 16U));

// To the bit, but any NaN is as good as another.
bool same(float a, float b) {
    return std::isnan(a) ? std::isnan(b)
                         : std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

class FastReverb : public testing::TestWithParam<double> {};

TEST_P(FastReverb, MatchesThePlainOneToTheBit) {
    Dice dice{std::mt19937(5)};
    lumivarda::dsp::Plate70Reverb reverb;
    plain::PlainReverb reference;
    if (GetParam() >= 0.0) { // or never prepared
        reverb.prepare(GetParam());
        reference.prepare(GetParam());
    }
    for (int block = 0; block < 120; ++block) {
        SCOPED_TRACE(block);
        reverb.roomSize = reference.roomSize = dice.upTo(1.0f);
        reverb.preDelayMs = reference.preDelayMs = dice.oneIn(4) ? 0.0f : dice.upTo(220.0f);
        reverb.updateCoefficients();
        if (dice.oneIn(30)) {
            reverb.reset();
            reference.reset();
        }
        // First around the flush limit; a NaN comes last and stays.
        const std::uint32_t frames = kBlocks[dice.below(std::size(kBlocks))];
        std::vector<float> left = plane(frames, block < 110, dice);
        const std::vector<float> right(frames, block < 40 ? 0.0f : dice.upTo(1.0f));
        for (float& value : left) {
            value *= block < 40 ? 1e-28f : 1.0f;
        }
        std::vector<float> wetLeft(frames), wetRight(frames);
        reverb.processBlock(left.data(), right.data(), wetLeft.data(), wetRight.data(), frames);
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const auto wet = reference.process(left[frame], right[frame]);
            ASSERT_TRUE(same(wetLeft[frame], wet.left)) << "frame " << frame;
            ASSERT_TRUE(same(wetRight[frame], wet.right)) << "frame " << frame;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, FastReverb, testing::Values(-1, 0, 150, 700, 8000, 48000, 192000));

} // namespace
} // namespace percussomatic
