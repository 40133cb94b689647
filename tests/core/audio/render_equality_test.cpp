#include "audio/sound_engine.h"
#include "support/reference_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

// The engine beside the one written for reading. Working in fours could part from working frame by
// frame at the edges of fours, of recordings and of delay lines, and with numbers that are none.
namespace percussomatic {
namespace {

using Limits = std::numeric_limits<float>;

constexpr std::uint32_t kBlocks[] = {1, 3, 7, 64, 200, 511, 512, 513, 1500};
constexpr std::uint32_t kRates[] = {96000,  96000, 48000, 44100, 88200,   192000,
                                    192000, 24000, 47999, 8000,  1000000, 1};
constexpr float kOdd[] = {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), 1e-40f};
constexpr float kLevels[] = {1.0f, 2e-5f, 1e-5f, -0.0f}; // around the threshold
constexpr std::uint32_t kRecordings = 40;

// std::mt19937 gives the same numbers everywhere; the library's distributions do not.
struct Dice {
    std::mt19937 generator;
    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(generator()) % limit;
    }
    bool oneIn(std::uint32_t chances) { return below(chances) == 0; }
    float between(float low, float high) {
        return low + (high - low) * static_cast<float>(below(4097)) / 4096.0f;
    }
};

std::vector<float> plane(std::size_t frames, bool finite, Dice& dice) {
    std::vector<float> values(frames);
    float level = 1.0f;
    for (float& value : values) {
        level = dice.oneIn(150) ? kLevels[dice.below(4)] : level;
        value = !finite && dice.oneIn(700) ? kOdd[dice.below(4)] : level * dice.between(-1, 1);
    }
    return values;
}

// A random turn of a control or two, the same on both engines.
template <typename Both>
void turnAControl(bool finite, Dice& dice, const Both& both) {
    const auto amount = [&dice] { return dice.between(-0.1f, 1.1f); };
    const float first = amount(), second = amount(), third = amount(), fourth = amount();
    const std::uint32_t send = dice.below(34), minMs = dice.below(30);
    // 89479: so many frames a second times that pass 32 bits.
    const std::uint32_t holdMs = dice.oneIn(9) ? 89479 : dice.below(40);
    const float preDelayMs = dice.oneIn(4) ? 0.0f : dice.between(-20.0f, 300.0f);
    const float threshold = dice.oneIn(9) ? Limits::quiet_NaN() : 4e-5f * first;
    const bool flag = !dice.oneIn(5);
    const std::uint32_t choice = dice.below(8);
    both([=](auto& engine) {
        switch (choice) {
        case 0:
            engine.setMasterVolume(first);
            engine.setEffectEnabled(finite && flag); // what is not would ring for ever
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
            engine.setAutoStop(flag, threshold, holdMs, minMs);
            break;
        default:
            engine.setSend(send, first);
        }
    });
}

class RenderEquality : public testing::TestWithParam<std::uint32_t> {};

TEST_P(RenderEquality, EngineMatchesThePlainOneToTheBit) {
    Dice dice{std::mt19937(GetParam())};
    const bool finite = GetParam() % 2 == 0;
    SoundEngine engine;
    reference::ReferenceEngine reference;
    const auto both = [&](const auto& operation) {
        operation(engine);
        operation(reference);
    };
    for (std::uint32_t i = 0; i < kRecordings; ++i) {
        const std::size_t frames = 1 + dice.below(i % 5 == 0 ? 12 : 9000);
        const Sample sample{kRates[i % std::size(kRates)], plane(frames, finite, dice),
                            plane(frames, finite, dice), finite && i % 3 != 0};
        both([&](auto& it) { it.samples.push_back(sample); });
    }
    both([](auto& it) { it.prepareForDevice(); });
    both([=](auto& it) { it.setEffectEnabled(finite); });
    std::ptrdiff_t busiest = 0;
    for (int block = 0; block < 400; ++block) {
        SCOPED_TRACE(block);
        // Now and then a burst that overfills the pool.
        for (std::uint32_t i = dice.oneIn(20) ? 150 : dice.below(6); i > 0; --i) {
            const auto index = static_cast<std::int32_t>(dice.below(kRecordings + 2)) - 1;
            const float gain = dice.oneIn(9) && !finite ? Limits::infinity()
                               : dice.oneIn(20)         ? dice.between(-1, 8)
                                                        : dice.between(0, 0.4f);
            const auto place = static_cast<std::size_t>(index);
            if (place >= kRecordings || dice.oneIn(2)) {
                both([=](auto& it) { it.trigger(index, gain); });
                continue;
            }
            // Also where a trigger never leads: on odd frames, between frames, near the end.
            const std::uint32_t slot = dice.below(kVoiceCount), silent = dice.below(1000);
            const auto end = static_cast<double>(reference.samples[place].left.size());
            const double starts[] = {0.0, 0.5, 0.1, end - 8.0, end - 2.5};
            const double position = std::max(0.0, starts[dice.below(5)] + dice.below(9));
            both([=](auto& it) { it.voices[slot] = {index, position, gain, true, silent, 0}; });
        }
        busiest = std::max(busiest, std::count_if(engine.voices.begin(), engine.voices.end(),
                                                  [](const Voice& voice) { return voice.active; }));
        for (std::uint32_t i = dice.below(4); i > 0; --i) {
            turnAControl(finite, dice, both);
        }
        const bool muted = dice.oneIn(20), stopAll = dice.oneIn(40);
        const std::uint32_t frames = kBlocks[dice.below(std::size(kBlocks))];
        const auto rendered = [=](auto& it) {
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
    EXPECT_EQ(busiest, kVoiceCount);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RenderEquality, testing::Range(10U, 18U));

// To the bit, but any NaN is as good as another.
bool same(float a, float b) {
    return std::isnan(a) ? std::isnan(b)
                         : std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

class ReverbEquality : public testing::TestWithParam<double> {};

TEST_P(ReverbEquality, FramesAndBlocksMatchTheReferenceToTheBit) {
    Dice dice{std::mt19937(5)};
    lumivarda::dsp::Plate70Reverb reverb;
    reference::ReferenceReverb reference;
    if (GetParam() >= 0.0) { // or never prepared
        reverb.prepare(GetParam());
        reference.prepare(GetParam());
    }
    for (int block = 0; block < 150; ++block) {
        SCOPED_TRACE(block);
        reverb.settings.roomSize = reference.roomSize = dice.between(0, 1);
        reverb.settings.damping = reference.damping = dice.between(0, 1);
        reverb.settings.width = reference.width = dice.between(0, 1);
        // 28.08...: another frame at 48000 Hz when the product is taken in another order.
        const float delaysMs[] = {0.0f, 28.0833302f, dice.between(-10, 240)};
        reverb.settings.preDelayMs = reference.preDelayMs = delaysMs[dice.below(3)];
        reverb.setWet(reference.wet = dice.between(0, 1));
        if (dice.oneIn(30)) {
            reverb.reset();
            reference.reset();
        }
        // First around the flush limit; a NaN comes last and stays.
        const std::uint32_t frames = kBlocks[dice.below(std::size(kBlocks))];
        std::vector<float> left = plane(frames, block < 140, dice);
        const std::vector<float> right(frames, block < 40 ? 0.0f : dice.between(0, 1));
        for (float& value : left) {
            value *= block < 40 ? 1e-28f : 4.0f;
        }
        std::vector<float> wetLeft(frames), wetRight(frames);
        if (dice.oneIn(3)) {
            for (std::size_t frame = 0; frame < frames; ++frame) {
                const auto wet = reverb.process(left[frame], right[frame]);
                wetLeft[frame] = wet.left;
                wetRight[frame] = wet.right;
            }
        } else {
            reverb.processBlock(left.data(), right.data(), wetLeft.data(), wetRight.data(), frames);
        }
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const auto wet = reference.process(left[frame], right[frame]);
            ASSERT_TRUE(same(wetLeft[frame], wet.left)) << "frame " << frame;
            ASSERT_TRUE(same(wetRight[frame], wet.right)) << "frame " << frame;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, ReverbEquality,
                         testing::Values(-1, 0, 150, 700, 8000, 44100, 48000, 96000.5, 192000));

} // namespace
} // namespace percussomatic
