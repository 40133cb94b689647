// SPDX-License-Identifier: MIT
#include "win32/audio/wave_out.h"

#include "wave_device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace percussomatic {
namespace {

using wave_device::Behaviour, wave_device::pendingTimeoutMs, wave_device::setBehaviour;

constexpr int kBuffers = static_cast<int>(kOutputBufferCount);
constexpr Behaviour kAbsent{.openResult = MMSYSERR_BADDEVICEID};

// A second of a rising line, so that every block differs from every other.
void loadRamp(SoundEngine& engine) {
    std::vector<float> ramp(kDeviceRateHz);
    std::ranges::generate(ramp, [value = 0.0f]() mutable { return value += 1.0f / kDeviceRateHz; });
    engine.samples.push_back({kDeviceRateHz, ramp, ramp, true});
}

bool isAudible(const wave_device::Block& block) {
    return std::ranges::any_of(block.samples, [](std::int16_t sample) { return sample != 0; });
}

class WaveOutTest : public testing::Test {
protected:
    void SetUp() override { loadRamp(engine); }
    void TearDown() override { stop(); }

    void start() {
        wave_device::create({});
        ASSERT_TRUE(out.start());
    }
    void stop() {
        out.stop();
        EXPECT_EQ(out.device, nullptr);
        EXPECT_FALSE(wave_device::state().open);
        EXPECT_EQ(wave_device::state().violations, "");
    }
    // Completes a buffer and waits for its refill, the write of that number.
    static void refill(int write) {
        wave_device::completeOldest();
        ASSERT_TRUE(wave_device::waitForWrites(write));
    }
    // Lets the pending wait time out. The next wait then has the given timeout.
    static void expectAfterTimeout(DWORD nextMs) {
        wave_device::expireTimeout();
        ASSERT_EQ(pendingTimeoutMs(), nextMs);
    }
    bool voicesPlay() const {
        return std::ranges::any_of(engine.voices, [](const Voice& voice) { return voice.active; });
    }
    void callBack(WAVEHDR* header, UINT message = WOM_DONE) {
        WaveOut::onDeviceCallback(out.device, message, reinterpret_cast<DWORD_PTR>(&out),
                                  reinterpret_cast<DWORD_PTR>(header), 0);
    }

    SoundEngine engine;
    WaveOut out{engine};
};

TEST_F(WaveOutTest, FailedStartReleasesTheDeviceAndCanBeRepeated) {
    const struct {
        Behaviour behaviour;
        int writes;
        bool voicesEnd;
    } cases[] = {{kAbsent, 0, false},
                 {{.failingPrepare = 1}, 0, true},
                 {{.failingPrepare = kBuffers}, kBuffers - 1, true}};
    for (const auto& [behaviour, writes, voicesEnd] : cases) {
        SCOPED_TRACE(behaviour.failingPrepare);
        wave_device::create(behaviour);
        engine.trigger(0, 1.0f);
        EXPECT_FALSE(out.start());
        EXPECT_EQ(wave_device::state().writes, writes);
        EXPECT_NE(voicesPlay(), voicesEnd);
        stop();
        start();
        refill(kBuffers + 1);
        stop();
    }
}

TEST_F(WaveOutTest, PlaysEveryBlockInOrderFromATriggerBeforeTheStart) {
    SoundEngine twin;
    loadRamp(twin);
    twin.prepareForDevice();
    twin.trigger(0, 0.5f);
    engine.trigger(0, 0.5f);

    start();
    for (int write = kBuffers + 1; write <= 3 * kBuffers; ++write) {
        refill(write);
    }
    const auto blocks = wave_device::state().written;
    for (std::size_t block = 0; block < blocks.size(); ++block) {
        SCOPED_TRACE(block);
        std::vector<std::int16_t> expected(std::size_t{kDeviceBufferFrames} * 2);
        twin.renderBlock(expected.data(), kDeviceBufferFrames);
        EXPECT_EQ(blocks[block].samples, expected);
        EXPECT_EQ(blocks[block].header, &(*out.buffers)[block % kOutputBufferCount].header);
    }
    EXPECT_EQ(out.lateBuffers, 0U);
}

TEST_F(WaveOutTest, IgnoresForeignAndRepeatedCallbacks) {
    start();
    WAVEHDR foreign{};
    callBack(&foreign);
    callBack(nullptr);
    callBack(&(*out.buffers)[3].header, WOM_CLOSE);
    WaveOut::onDeviceCallback(out.device, WOM_DONE, 0, reinterpret_cast<DWORD_PTR>(&foreign), 0);
    engine.mutex.lock(); // blocks the refill
    wave_device::completeOldest();
    callBack(&(*out.buffers)[0].header); // a second time before its refill
    engine.mutex.unlock();
    refill(kBuffers + 2);
    EXPECT_EQ(pendingTimeoutMs(), 2000U);
    EXPECT_EQ(wave_device::state().writes, kBuffers + 2);
}

TEST_F(WaveOutTest, CountsOneUnderrunWhenTheQueueRunsEmpty) {
    start();
    engine.mutex.lock(); // blocks the refill
    for (int buffer = 0; buffer < kBuffers; ++buffer) {
        wave_device::completeOldest();
    }
    engine.mutex.unlock();
    ASSERT_TRUE(wave_device::waitForWrites(2 * kBuffers));
    EXPECT_EQ(pendingTimeoutMs(), 2000U);
    EXPECT_EQ(out.lateBuffers, 1U);
}

TEST_F(WaveOutTest, StopEndsTheVoicesAndIgnoresLateCompletions) {
    start();
    engine.trigger(0, 1.0f);
    refill(kBuffers + 1);
    stop();
    EXPECT_FALSE(voicesPlay());
    for (OutputBuffer& buffer : *out.buffers) {
        callBack(&buffer.header);
    }
    stop();
    EXPECT_EQ(wave_device::state().writes, kBuffers + 1);

    start();
    ASSERT_TRUE(out.start()) << "closes and opens again";
    EXPECT_EQ(wave_device::state().opens, 2);
    EXPECT_TRUE(std::ranges::none_of(wave_device::state().written, isAudible));
    refill(2 * kBuffers + 1);
}

TEST_F(WaveOutTest, ReopensALostDeviceWithoutTheSoundsInBetween) {
    start();
    refill(kBuffers + 1);
    engine.trigger(0, 1.0f);
    ASSERT_EQ(pendingTimeoutMs(), 2000U);
    setBehaviour(kAbsent);
    for (const DWORD retryMs : {500U, 1000U, 2000U, 4000U, 8000U, 10000U, 10000U}) {
        expectAfterTimeout(retryMs);
        EXPECT_EQ(out.device, nullptr);
        EXPECT_FALSE(voicesPlay());
        engine.trigger(0, 1.0f); // inaudible
    }
    setBehaviour({.failingPrepare = 2});
    expectAfterTimeout(10000);
    EXPECT_EQ(out.device, nullptr);
    engine.trigger(0, 1.0f);
    setBehaviour({});
    expectAfterTimeout(2000);
    EXPECT_NE(out.device, nullptr);
    EXPECT_EQ(wave_device::state().opens, 3);
    EXPECT_FALSE(isAudible(wave_device::state().written.back()));
    engine.trigger(0, 1.0f);
    refill(wave_device::state().writes + 1);
    EXPECT_TRUE(isAudible(wave_device::state().written.back()));
}

TEST_F(WaveOutTest, RetryDelayGrowsUntilTheDeviceCompletesABuffer) {
    wave_device::create(kAbsent);
    ASSERT_FALSE(out.start());
    ASSERT_EQ(pendingTimeoutMs(), 500U);
    setBehaviour({}); // opens, but completes nothing
    for (const DWORD retryMs : {1000U, 2000U, 4000U}) {
        expectAfterTimeout(2000);
        expectAfterTimeout(retryMs);
    }
    expectAfterTimeout(2000);
    refill(4 * kBuffers + 1);
    ASSERT_EQ(pendingTimeoutMs(), 2000U);
    expectAfterTimeout(500);
}

TEST_F(WaveOutTest, DoesNotReuseBuffersThatALostDeviceKeeps) {
    start();
    setBehaviour({.keepsBuffers = true});
    ASSERT_EQ(pendingTimeoutMs(), 2000U);
    expectAfterTimeout(500);
    setBehaviour({});
    expectAfterTimeout(2000);
    for (int buffer = 0; buffer < kBuffers; ++buffer) {
        wave_device::completeOldest(); // one of the lost device's
    }
    EXPECT_EQ(pendingTimeoutMs(), 2000U);
    EXPECT_EQ(wave_device::state().writes, 2 * kBuffers);
    refill(2 * kBuffers + 1);
}

// Completions arrive on the device's own thread, also while the program closes and resets it.
TEST_F(WaveOutTest, SurvivesAThousandStartsAndStops) {
    constexpr Behaviour kPlays{.autoComplete = true};
    constexpr Behaviour kBehaviours[] = {
        kPlays, kAbsent, kPlays, {.failingPrepare = kBuffers, .autoComplete = true}, {}};
    wave_device::create({});
    for (int cycle = 0; cycle < 1000; ++cycle) {
        const Behaviour& behaviour = kBehaviours[cycle % 5];
        const bool fails =
            behaviour.openResult != MMSYSERR_NOERROR || behaviour.failingPrepare != 0;
        setBehaviour(behaviour);
        const int writes = wave_device::state().writes;
        ASSERT_NE(out.start(), fails);
        engine.trigger(0, 0.1f);
        if (behaviour.autoComplete && !fails) {
            ASSERT_TRUE(wave_device::waitForWrites(writes + kBuffers + cycle % 7));
        } else if (cycle % 2 == 0) { // stops while the refill thread closes or opens the device
            ASSERT_NE(pendingTimeoutMs(), 0U);
            setBehaviour(kPlays);
            wave_device::expireTimeout();
        }
        stop();
    }
}

} // namespace
} // namespace percussomatic
