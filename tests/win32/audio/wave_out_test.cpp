// SPDX-License-Identifier: MIT
#include "win32/audio/wave_out.h"

#include "system_time.h"
#include "wave_device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace percussomatic {
namespace {

using wave_device::Behaviour, wave_device::kBlockNs, wave_device::pendingTimeoutMs,
    wave_device::setBehaviour;

constexpr int kBuffers = static_cast<int>(kOutputBufferCount);
constexpr int kTimedRefills = 256;
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
    static void refillMany() {
        const int writes = wave_device::state().writes;
        for (int refills = 1; refills <= kTimedRefills; ++refills) {
            refill(writes + refills);
        }
    }
    // Lets the pending wait time out. The next wait then has the given timeout.
    static void expectAfterTimeout(DWORD nextMs) {
        wave_device::expireTimeout();
        ASSERT_EQ(pendingTimeoutMs(), nextMs);
    }
    bool voicesPlay() const {
        return std::ranges::any_of(engine.voices, [](const Voice& voice) { return voice.active; });
    }
    void callBack(WAVEHDR* header, HWAVEOUT device, UINT message = WOM_DONE) {
        WaveOut::onDeviceCallback(device, message, reinterpret_cast<DWORD_PTR>(&out),
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
                 {{.failingPrepare = kBuffers}, kBuffers - 1, true},
                 {{.failingWrite = 1}, 0, true},
                 {{.failingWrite = kBuffers}, kBuffers - 1, true}};
    for (const auto& [behaviour, writes, voicesEnd] : cases) {
        SCOPED_TRACE(10 * behaviour.failingPrepare + behaviour.failingWrite);
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

// A trigger waits for a block and the reserve: 512 + 240 frames after its due time.
TEST_F(WaveOutTest, TimedTriggerSoundsAtItsFrameOnceTheStreamClockHasLocked) {
    start();
    constexpr int kBlocksUntilLock = 64;
    for (const int refills : {kBlocksUntilLock - 1, kBlocksUntilLock}) {
        SCOPED_TRACE(refills);
        while (wave_device::state().writes < kBuffers + refills) {
            refill(wave_device::state().writes + 1);
        }
        engine.triggerAt(0, 1.0f, counterNs());
        refill(kBuffers + refills + 1);
        const auto samples = wave_device::state().written.back().samples;
        const auto loud = std::ranges::find_if(samples, [](int value) { return value != 0; });
        const std::ptrdiff_t onset = 1; // the ramp's first frame rounds to 0
        EXPECT_EQ((loud - samples.begin()) / 2, onset + (refills < kBlocksUntilLock ? 0 : 240));
        engine.voices.fill({});
    }
}

TEST_F(WaveOutTest, IgnoresForeignAndRepeatedCallbacks) {
    start();
    WAVEHDR foreign{};
    callBack(&foreign, out.device);
    callBack(nullptr, out.device);
    callBack(&(*out.buffers)[0].header, out.device, WOM_CLOSE);
    callBack(&(*out.buffers)[0].header, reinterpret_cast<HWAVEOUT>(&foreign)); // earlier device
    WaveOut::onDeviceCallback(out.device, WOM_DONE, 0, reinterpret_cast<DWORD_PTR>(&foreign), 0);
    ASSERT_EQ(pendingTimeoutMs(), 2000U);
    EXPECT_EQ(wave_device::state().writes, kBuffers);
    engine.mutex.lock(); // blocks the refill
    wave_device::completeOldest();
    callBack(&(*out.buffers)[0].header, out.device); // a second time before its refill
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
    HWAVEOUT const lastDevice = out.device;
    stop();
    EXPECT_FALSE(voicesPlay());
    for (OutputBuffer& buffer : *out.buffers) {
        callBack(&buffer.header, lastDevice);
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
    engine.setEffectEnabled(true);
    engine.setEffectPreset(0);
    engine.setSend(0, 1.0f);
    start();
    engine.trigger(0, 1000.0f); // leaves a loud tail
    refill(kBuffers + 1);
    refill(kBuffers + 2);
    ASSERT_EQ(pendingTimeoutMs(), 2000U);
    setBehaviour(kAbsent);
    for (const DWORD retryMs : {500U, 1000U, 2000U, 4000U, 8000U, 10000U, 10000U}) {
        expectAfterTimeout(retryMs);
        EXPECT_EQ(out.device, nullptr);
        EXPECT_FALSE(voicesPlay());
        engine.trigger(0, 1.0f); // inaudible
    }
    setBehaviour({.failingPrepare = 2});
    out.deviceListChanged();
    ASSERT_EQ(pendingTimeoutMs(), 500U);
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

TEST_F(WaveOutTest, RetryDelayGrowsUntilTheDeviceKeepsPlaying) {
    wave_device::create(kAbsent);
    ASSERT_FALSE(out.start());
    ASSERT_EQ(pendingTimeoutMs(), 500U);
    setBehaviour({}); // opens, but completes nothing
    for (const DWORD retryMs : {1000U, 2000U, 4000U}) {
        expectAfterTimeout(2000);
        expectAfterTimeout(retryMs);
    }
    setBehaviour({.failingWrite = kBuffers + 1});
    expectAfterTimeout(2000);
    wave_device::completeOldest();
    ASSERT_EQ(pendingTimeoutMs(), 8000U) << "at once after a rejected write";
    expectAfterTimeout(2000);
    refillMany();
    ASSERT_EQ(pendingTimeoutMs(), 2000U);
    setBehaviour({.blockNs = 0});
    refillMany();
    EXPECT_EQ(pendingTimeoutMs(), 500U);
}

TEST_F(WaveOutTest, CountsADeviceAsLostThatReturnsBuffersUnplayed) {
    const struct {
        int fastRefills; // then at normal speed
        std::int64_t fastNs;
        DWORD timeoutMs; // 500 after the loss
    } cases[] = {{kTimedRefills, kBlockNs / 4 - 1, 500},
                 {kTimedRefills, kBlockNs / 4 + 1, 2000},
                 {180, 0, 2000}}; // takes almost two seconds in advance
    for (const auto& [fastRefills, fastNs, timeoutMs] : cases) {
        start();
        for (int refills = 1; refills <= kTimedRefills; ++refills) {
            setBehaviour({.blockNs = refills <= fastRefills ? fastNs : kBlockNs});
            refill(kBuffers + refills);
        }
        EXPECT_EQ(pendingTimeoutMs(), timeoutMs)
            << fastRefills << " refills of " << fastNs << " ns";
        stop();
    }
}

TEST_F(WaveOutTest, DoesNotReuseBuffersThatALostDeviceKeeps) {
    start();
    setBehaviour({.keepsBuffers = true});
    out.deviceListChanged(); // no-op while a device is open
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
    setBehaviour({.keepsBuffers = true}); // even when the program ends
}

TEST_F(WaveOutTest, SearchNoticesAChangeBeforeItsWait) {
    start();
    ASSERT_EQ(pendingTimeoutMs(), 2000U);
    engine.mutex.lock(); // blocks the refill thread after it has closed the device
    wave_device::expireTimeout();
    while (out.device != nullptr) {
        std::this_thread::yield();
    }
    out.deviceListChanged();
    engine.mutex.unlock();
    EXPECT_EQ(pendingTimeoutMs(), 2000U);
    EXPECT_EQ(wave_device::state().opens, 2);
}

// Completions arrive on the device's own thread, also while the program closes and resets it.
TEST_F(WaveOutTest, SurvivesAThousandStartsAndStops) {
    constexpr Behaviour kPlays{.autoComplete = true};
    constexpr Behaviour kBehaviours[] = {
        kPlays, kAbsent, kPlays, {.failingWrite = kBuffers, .autoComplete = true}, {}};
    wave_device::create({});
    for (int cycle = 0; cycle < 1000; ++cycle) {
        const Behaviour& behaviour = kBehaviours[cycle % 5];
        const bool fails = behaviour.openResult != MMSYSERR_NOERROR || behaviour.failingWrite != 0;
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
