#include "win32/audio/wave_out.h"

#include "wave_device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace percussomatic {
namespace {

constexpr int kBuffers = static_cast<int>(kOutputBufferCount);

// A second of a rising line, so that every block differs from every other.
void loadRamp(SoundEngine& engine) {
    std::vector<float> ramp(kDeviceRateHz);
    for (std::size_t frame = 0; frame < ramp.size(); ++frame) {
        ramp[frame] = static_cast<float>(frame + 1) / static_cast<float>(ramp.size());
    }
    engine.samples.push_back({kDeviceRateHz, ramp, ramp, true});
}

bool voicesSound(const SoundEngine& engine) {
    return std::any_of(engine.voices.begin(), engine.voices.end(),
                       [](const Voice& voice) { return voice.active; });
}

class WaveOutTest : public testing::Test {
protected:
    // A new device, open and playing.
    void begin(const wave_device::Script& script = {}) {
        wave_device::begin(script);
        ASSERT_TRUE(out.start());
    }
    // The device returns its oldest buffer and has it again: so many have been written in all.
    static void refill(int writes) {
        wave_device::returnBuffer();
        ASSERT_TRUE(wave_device::waitForWrites(writes));
    }

    void SetUp() override { loadRamp(engine); }
    void TearDown() override {
        out.stop();
        EXPECT_EQ(wave_device::state().faults, "");
    }

    void done(WAVEHDR* header, UINT message = WOM_DONE) {
        WaveOut::onDeviceCallback(out.device, message, reinterpret_cast<DWORD_PTR>(&out),
                                  reinterpret_cast<DWORD_PTR>(header), 0);
    }

    SoundEngine engine;
    WaveOut out{engine};
};

TEST_F(WaveOutTest, FailedStartLeavesNothingBehind) {
    const struct {
        wave_device::Script script;
        int writes;
        bool voicesEnd;
    } cases[] = {
        {{.openResult = MMSYSERR_BADDEVICEID}, 0, false},
        {{.failingPrepare = 1}, 0, true},
        {{.failingPrepare = 2}, 1, true},
        {{.failingPrepare = kBuffers}, kBuffers - 1, true},
    };
    for (const auto& [script, writes, voicesEnd] : cases) {
        SCOPED_TRACE(script.failingPrepare);
        wave_device::begin(script);
        engine.trigger(0, 1.0f);
        EXPECT_FALSE(out.start());
        EXPECT_EQ(out.device, nullptr);
        EXPECT_FALSE(wave_device::state().open);
        EXPECT_EQ(wave_device::state().writes, writes);
        EXPECT_NE(voicesSound(engine), voicesEnd);
        out.stop();
        EXPECT_EQ(wave_device::state().faults, "");

        begin();
        refill(kBuffers + 1);
        out.stop();
        EXPECT_EQ(wave_device::state().faults, "");
    }
}

TEST_F(WaveOutTest, PlaysWithoutAGapFromWhatWasTriggeredBeforeTheStart) {
    SoundEngine twin;
    loadRamp(twin);
    twin.prepareForDevice();
    twin.trigger(0, 0.5f);
    engine.trigger(0, 0.5f);

    begin();
    constexpr int kBlocks = 3 * kBuffers;
    for (int count = kBuffers; count < kBlocks; ++count) {
        refill(count + 1);
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

TEST_F(WaveOutTest, IgnoresEverythingButItsOwnCompletionsAndCountsGaps) {
    begin();
    WAVEHDR foreign{};
    done(&foreign);
    done(nullptr);
    done(&(*out.buffers)[3].header, WOM_OPEN);
    done(&(*out.buffers)[3].header, WOM_CLOSE);
    WaveOut::onDeviceCallback(out.device, WOM_DONE, 0,
                              reinterpret_cast<DWORD_PTR>(&(*out.buffers)[3].header), 0);
    engine.mutex.lock();
    wave_device::returnBuffer();
    done(&(*out.buffers)[0].header); // a second time before its refill
    engine.mutex.unlock();
    refill(kBuffers + 2);

    engine.mutex.lock();
    for (int buffer = 0; buffer < kBuffers; ++buffer) {
        wave_device::returnBuffer();
    }
    engine.mutex.unlock();
    ASSERT_TRUE(wave_device::waitForWrites(2 * kBuffers + 2));
    out.stop();
    EXPECT_EQ(wave_device::state().writes, 2 * kBuffers + 2);
    EXPECT_EQ(out.lateBuffers, 1U) << "with the first of them it has one again";
}

TEST_F(WaveOutTest, StopEndsTheVoicesAndDropsWhatComesLate) {
    begin();
    engine.trigger(0, 1.0f);
    refill(kBuffers + 1);
    out.stop();
    EXPECT_EQ(out.device, nullptr);
    EXPECT_FALSE(wave_device::state().open);
    EXPECT_FALSE(voicesSound(engine));

    for (OutputBuffer& buffer : *out.buffers) {
        done(&buffer.header);
    }
    out.stop();
    EXPECT_EQ(wave_device::state().writes, kBuffers + 1);

    begin();
    ASSERT_TRUE(out.start()) << "opens once more";
    EXPECT_EQ(wave_device::state().opens, 2);
    for (const auto& block : wave_device::state().written) {
        EXPECT_EQ(std::count(block.samples.begin(), block.samples.end(), 0),
                  std::ptrdiff_t{kDeviceBufferFrames} * 2);
    }
    refill(2 * kBuffers + 1);
}

TEST_F(WaveOutTest, ReplacesADeviceThatFallsSilentAndGoesOn) {
    begin();
    refill(kBuffers + 1);
    engine.trigger(0, 1.0f);
    EXPECT_EQ(wave_device::awaitedMs(), 2000U);
    wave_device::follow({.openResult = MMSYSERR_BADDEVICEID});
    wave_device::passTime();
    for (const DWORD pauseMs : {500U, 1000U, 2000U, 4000U, 8000U, 10000U, 10000U}) {
        ASSERT_EQ(wave_device::awaitedMs(), pauseMs);
        EXPECT_EQ(out.device, nullptr);
        EXPECT_FALSE(voicesSound(engine));
        engine.trigger(0, 1.0f); // the rhythm goes on, unheard
        wave_device::passTime();
    }
    ASSERT_EQ(wave_device::awaitedMs(), 10000U);
    wave_device::follow({.failingPrepare = 2});
    wave_device::passTime();
    ASSERT_EQ(wave_device::awaitedMs(), 10000U);
    EXPECT_EQ(out.device, nullptr);
    engine.trigger(0, 1.0f);
    wave_device::follow({});
    wave_device::passTime();

    ASSERT_EQ(wave_device::awaitedMs(), 2000U);
    EXPECT_NE(out.device, nullptr);
    EXPECT_EQ(wave_device::state().opens, 3);
    const auto loud = [](const wave_device::Block& block) {
        return std::any_of(block.samples.begin(), block.samples.end(),
                           [](std::int16_t sample) { return sample != 0; });
    };
    EXPECT_FALSE(loud(wave_device::state().written.back()));
    engine.trigger(0, 1.0f);
    refill(wave_device::state().writes + 1);
    EXPECT_TRUE(loud(wave_device::state().written.back()));
}

TEST_F(WaveOutTest, LeavesADeviceThatNeverAnswersAloneForEverLonger) {
    wave_device::begin({.openResult = MMSYSERR_BADDEVICEID});
    ASSERT_FALSE(out.start());
    ASSERT_EQ(wave_device::awaitedMs(), 500U) << "one that was absent at the start is tried again";
    wave_device::follow({});
    for (const DWORD nextPauseMs : {1000U, 2000U, 4000U}) {
        wave_device::passTime();
        ASSERT_EQ(wave_device::awaitedMs(), 2000U);
        EXPECT_NE(out.device, nullptr);
        wave_device::passTime();
        ASSERT_EQ(wave_device::awaitedMs(), nextPauseMs);
    }
    wave_device::passTime();
    ASSERT_EQ(wave_device::awaitedMs(), 2000U);
    refill(4 * kBuffers + 1);
    ASSERT_EQ(wave_device::awaitedMs(), 2000U);
    wave_device::passTime();
    EXPECT_EQ(wave_device::awaitedMs(), 500U) << "it had answered";
}

TEST_F(WaveOutTest, LeavesItsBuffersToADeviceThatDoesNotLetGo) {
    begin({.clings = true});
    ASSERT_EQ(wave_device::awaitedMs(), 2000U);
    wave_device::passTime();
    ASSERT_EQ(wave_device::awaitedMs(), 500U);
    wave_device::follow({});
    wave_device::passTime();
    ASSERT_EQ(wave_device::awaitedMs(), 2000U);
    for (int buffer = 0; buffer < kBuffers; ++buffer) {
        wave_device::returnBuffer(); // of the device that is gone
    }
    EXPECT_EQ(wave_device::awaitedMs(), 2000U);
    EXPECT_EQ(wave_device::state().writes, 2 * kBuffers);
    refill(2 * kBuffers + 1);
}

// Completions arrive on the device's own thread all the while, also between closing and reset.
TEST_F(WaveOutTest, SurvivesManyStartsAndStops) {
    constexpr int kCycles = 1000;
    constexpr wave_device::Script kPlays{.returnsByItself = true};
    constexpr wave_device::Script kScripts[] = {
        kPlays, {.openResult = MMSYSERR_BADDEVICEID},
        kPlays, {.failingPrepare = kBuffers, .returnsByItself = true},
        {}, // silent
    };
    wave_device::begin({});
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        const wave_device::Script& script = kScripts[static_cast<std::size_t>(cycle) % 5];
        const bool fails = script.openResult != MMSYSERR_NOERROR || script.failingPrepare != 0;
        wave_device::follow(script);
        const int before = wave_device::state().writes;
        ASSERT_NE(out.start(), fails);
        engine.trigger(0, 0.1f);
        if (script.returnsByItself && !fails) {
            ASSERT_TRUE(wave_device::waitForWrites(before + kBuffers + cycle % 7));
        } else if (cycle % 2 == 0) { // stopped while it closes or opens
            ASSERT_NE(wave_device::awaitedMs(), 0U);
            wave_device::follow(kPlays);
            wave_device::passTime();
        }
        out.stop();
        ASSERT_EQ(out.device, nullptr);
    }
}

} // namespace
} // namespace percussomatic
