// SPDX-License-Identifier: MIT
// Compares the engine and the reverb with their slow exact versions, bit for bit. Four frames at a
// time could differ from one at a time at the ends of runs, recordings and delay lines, and with
// infinite and NaN values.
#include "audio/sound_engine.h"
#include "support/counting_new.h"
#include "support/reference_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

namespace percussomatic {
namespace {

using Limits = std::numeric_limits<float>;

constexpr std::uint32_t kBlocks[] = {1, 3, 7, 64, 200, 511, 512, 513, 1500};
constexpr std::uint32_t kRates[] = {96000,  96000, 48000, 44100, 88200,   192000,
                                    192000, 24000, 47999, 8000,  1000000, 1};
constexpr float kNonFinite[] = {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                                1e-40f};
constexpr float kLevels[] = {1.0f, 2e-5f, 1e-5f, -0.0f}; // around the silence threshold
constexpr std::uint32_t kRecordings = 40;

// std::mt19937 gives the same numbers everywhere; the library's distributions do not.
struct Random {
    std::mt19937 generator;
    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(generator()) % limit;
    }
    bool oneIn(std::uint32_t chances) { return below(chances) == 0; }
    float between(float low, float high) {
        return low + (high - low) * static_cast<float>(below(4097)) / 4096.0f;
    }
    template <typename Value, std::size_t kCount>
    Value oneOf(const Value (&values)[kCount]) {
        return values[below(kCount)];
    }
};

std::vector<float> channel(std::size_t frames, bool finite, float maxLevel, Random& random) {
    std::vector<float> values(frames);
    float level = maxLevel;
    for (float& value : values) {
        level = random.oneIn(150) ? random.oneOf(kLevels) * maxLevel : level;
        value =
            !finite && random.oneIn(700) ? random.oneOf(kNonFinite) : level * random.between(-1, 1);
    }
    return values;
}

// As for a reopened device: clears the tail, keeps the settings.
template <typename Engine>
void prepareAgain(Engine& engine) {
    if (const double rateHz = engine.reverb.sampleRate; rateHz != kDeviceRateHz) {
        return engine.reverb.prepare(rateHz);
    }
    engine.prepareForDevice();
}

// The same numbers change both engines in the same way.
template <typename Engine>
void changeSetting(Engine& engine, bool finite, Random& random) {
    const auto amount = [&random] { return random.between(-0.1f, 1.1f); };
    switch (random.below(12)) {
    case 0:
        engine.setMasterVolume(amount());
        return engine.setEffectEnabled(finite && !random.oneIn(5)); // the reverb would keep a NaN
    case 1:
        return engine.setEffectPreset(static_cast<std::int32_t>(random.below(8)) - 1);
    case 2:
        return engine.setEffectReturn(amount());
    case 3:
        return engine.setEffectRoomSize(amount());
    case 4:
        return engine.setEffectDamping(amount());
    case 5:
        return engine.setEffectWidth(amount());
    case 6:
        // 28.08... ms at 48000 Hz gives another frame if the product has another order.
        return engine.setEffectPreDelayMs(
            random.oneOf({0.0f, 28.0833302f, random.between(-20, 300), random.between(-20, 300)}));
    case 7: {
        const float threshold = random.oneIn(9) ? Limits::quiet_NaN() : 4e-5f * amount();
        // 89479 ms times 48000 Hz do not fit into 32 bits.
        const std::uint32_t holdMs = random.oneIn(9) ? 89479 : random.below(40);
        const bool enabled = !random.oneIn(5);
        return engine.setAutoStop(enabled, threshold, holdMs, random.below(30));
    }
    case 8:
        return random.oneIn(4) ? prepareAgain(engine) : void();
    default:
        return engine.setSend(random.below(34), amount());
    }
}

std::int64_t nsOfFrame(std::int64_t frame) {
    return frame * 1'000'000'000 / kDeviceRateHz;
}

// By a trigger, by one that is due within some blocks or was due before, or at a position that
// triggers do not lead to: on an odd frame, between frames, near the end.
template <typename Engine>
void startVoice(Engine& engine, bool finite, std::int64_t firstFrame, Random& random) {
    const std::uint32_t index = random.below(kRecordings + 2) - 1;
    const auto sampleIndex = static_cast<std::int32_t>(index);
    const float gain = random.oneIn(9) && !finite ? Limits::infinity()
                       : random.oneIn(20)         ? random.between(-1, 8)
                                                  : random.between(0, 0.4f);
    if (index >= kRecordings || random.oneIn(3)) {
        return engine.trigger(sampleIndex, gain);
    }
    if (random.oneIn(2)) {
        return engine.triggerAt(sampleIndex, gain,
                                nsOfFrame(firstFrame + random.below(2000) - 200));
    }
    const auto end = static_cast<double>(engine.samples[index].left.size());
    const double offset = random.below(9);
    const double start = random.oneOf({0.0, 0.5, 0.1, end - 8.0, end - 2.5}) + offset;
    engine.voices[random.below(kVoiceCount)] = {sampleIndex, std::max(0.0, start), gain,
                                                true,        random.below(1000),   0};
}

// Only even seeds use the effect, each with the reverb at another rate; two of them are as quiet as
// the reverb's flush limit.
template <typename Engine>
void prepare(Engine& engine, std::uint32_t seed) {
    Random random{std::mt19937(seed)};
    const bool finite = seed % 2 == 0;
    const float level = seed % 8 == 4 ? 1e-28f : 1.0f;
    for (std::uint32_t i = 0; i < kRecordings; ++i) {
        const std::size_t frames = 1 + random.below(i % 5 == 0 ? 12 : 9000);
        engine.samples.push_back({kRates[i % std::size(kRates)],
                                  channel(frames, finite, level, random),
                                  channel(frames, finite, level, random), finite && i % 3 != 0});
    }
    constexpr double kReverbRatesHz[] = {48000, -1, 150, 700, 44100, 0, 96000.5, 192000};
    if (const double rateHz = kReverbRatesHz[seed / 2]; rateHz >= 0.0) { // otherwise unprepared
        engine.prepareForDevice();
        engine.reverb.prepare(rateHz);
    }
    engine.setEffectEnabled(finite);
}

// Returns the mix and the state of all voices, of which the first number is that of active ones.
template <typename Engine>
auto renderRandomBlock(Engine& engine, bool finite, std::int64_t firstFrame, Random random) {
    // Occasionally more than there are voices.
    for (std::uint32_t i = random.oneIn(20) ? 150 : random.below(6); i > 0; --i) {
        startVoice(engine, finite, firstFrame, random);
    }
    std::vector<double> state{
        static_cast<double>(std::ranges::count(engine.voices, true, &Voice::active))};
    for (std::uint32_t i = random.below(4); i > 0; --i) {
        changeSetting(engine, finite, random);
    }
    engine.outputMuted = random.oneIn(20);
    engine.stopAllVoicesRequest = random.oneIn(40);
    const std::uint32_t frames = random.oneOf(kBlocks);
    std::vector<std::int16_t> mix(std::size_t{frames} * 2 + 8, 0x5A5A); // 8 must stay unwritten
    const std::size_t allocations = allocationCount;
    if (random.oneIn(9)) {
        engine.renderBlock(mix.data(), frames);
    } else {
        engine.renderTimedBlock(mix.data(), frames, {0, firstFrame});
    }
    EXPECT_EQ(allocationCount, allocations);
    EXPECT_GT(allocations, 0U) << "not counted";
    for (const Voice& v : engine.voices) {
        state.insert(state.end(), {v.active ? 1.0 : 0.0, v.position, 1.0 * v.silentFrames,
                                   1.0 * v.playedFrames});
    }
    return std::pair(mix, state);
}

class RenderEquality : public testing::TestWithParam<std::uint32_t> {};

TEST_P(RenderEquality, EngineMatchesTheReferenceToTheBit) {
    const bool finite = GetParam() % 2 == 0;
    SoundEngine engine;
    reference::ReferenceEngine reference;
    prepare(engine, GetParam());
    prepare(reference, GetParam());
    const auto sameBuffers = [](const auto& a, const auto& b) { return a.buffer == b.buffer; };
    double maxActive = 0;
    std::int64_t firstFrame = 0;
    for (std::uint32_t block = 0; block < 400; ++block) {
        SCOPED_TRACE(block);
        const Random random{std::mt19937(GetParam() * 1000 + block)};
        const auto rendered = renderRandomBlock(engine, finite, firstFrame, random);
        ASSERT_EQ(rendered, renderRandomBlock(reference, finite, firstFrame, random));
        firstFrame += static_cast<std::int64_t>(rendered.first.size()) / 2 - 4;
        for (std::size_t side = 0; side < 2; ++side) {
            ASSERT_TRUE(std::ranges::equal(engine.reverb.combs[side], reference.reverb.combs[side],
                                           sameBuffers));
            ASSERT_TRUE(std::ranges::equal(engine.reverb.allpasses[side],
                                           reference.reverb.allpasses[side], sameBuffers));
        }
        maxActive = std::max(maxActive, rendered.second[0]);
    }
    EXPECT_EQ(maxActive, kVoiceCount);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RenderEquality, testing::Range(0U, 16U));

} // namespace
} // namespace percussomatic
