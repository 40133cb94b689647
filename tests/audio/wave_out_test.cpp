#include "audio/wave_out.h"

#include "support/wave_builder.h"
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
    const Bytes wave = WaveBuilder().format({.tag = 3, .bits = 32}).floats(ramp).bytes();
    ASSERT_EQ(engine.loadSample(wave.data(), wave.size()), 0);
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
        const char* name;
        wave_device::Script script;
        int writes;
        bool voicesEnd;
    } cases[] = {
        {"no device", {.openResult = MMSYSERR_BADDEVICEID}, 0, false},
        {"first prepare", {.failingPrepare = 1}, 0, true},
        {"third prepare", {.failingPrepare = 3}, 2, true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        wave_device::begin(each.script);
        engine.trigger(0, 1.0f);
        EXPECT_FALSE(out.start());
        EXPECT_EQ(out.device, nullptr);
        EXPECT_FALSE(wave_device::state().open);
        EXPECT_EQ(wave_device::state().writes, each.writes);
        EXPECT_NE(voicesSound(engine), each.voicesEnd);
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
        EXPECT_EQ(blocks[block].header, &out.buffers[block % kOutputBufferCount].header);
    }
    EXPECT_EQ(out.lateBuffers, 0U);
}

TEST_F(WaveOutTest, IgnoresEverythingButItsOwnCompletionsAndCountsGaps) {
    begin();
    WAVEHDR foreign{};
    done(&foreign);
    done(nullptr);
    done(&out.buffers[3].header, WOM_OPEN);
    done(&out.buffers[3].header, WOM_CLOSE);
    WaveOut::onDeviceCallback(out.device, WOM_DONE, 0,
                              reinterpret_cast<DWORD_PTR>(&out.buffers[3].header), 0);
    engine.mutex.lock();
    wave_device::returnBuffer();
    done(&out.buffers[0].header); // a second time before its refill
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

    for (OutputBuffer& buffer : out.buffers) {
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

// Completions arrive on the device's own thread all the while, also between closing and reset.
TEST_F(WaveOutTest, SurvivesManyStartsAndStops) {
    constexpr int kCycles = 300;
    wave_device::begin({.returnsByItself = true});
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        const int before = wave_device::state().writes;
        ASSERT_TRUE(out.start());
        engine.trigger(0, 0.1f);
        ASSERT_TRUE(wave_device::waitForWrites(before + kBuffers + cycle % 7));
        out.stop();
        ASSERT_FALSE(voicesSound(engine));
    }
}

} // namespace
} // namespace percussomatic
