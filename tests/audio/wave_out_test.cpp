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
    void SetUp() override { loadRamp(engine); }
    void TearDown() override {
        out.stop();
        EXPECT_EQ(wave_device::faults(), "");
    }

    void done(WAVEHDR* header, UINT message = WOM_DONE) {
        WaveOut::onDeviceCallback(out.device, message, reinterpret_cast<DWORD_PTR>(&out),
                                  reinterpret_cast<DWORD_PTR>(header), 0);
    }

    std::size_t placeOf(const WAVEHDR* header) const {
        std::size_t place = 0;
        while (place < out.buffers.size() && &out.buffers.at(place).header != header) {
            ++place;
        }
        return place;
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
        EXPECT_FALSE(wave_device::isOpen());
        EXPECT_EQ(wave_device::writeCount(), each.writes);
        EXPECT_NE(voicesSound(engine), each.voicesEnd);
        out.stop();
        EXPECT_EQ(wave_device::faults(), "");

        wave_device::begin({});
        EXPECT_TRUE(out.start());
        wave_device::returnBuffer();
        EXPECT_TRUE(wave_device::waitForWrites(kBuffers + 1));
        out.stop();
        EXPECT_EQ(wave_device::faults(), "");
    }
}

TEST_F(WaveOutTest, PlaysWithoutAGapFromWhatWasTriggeredBeforeTheStart) {
    SoundEngine twin;
    loadRamp(twin);
    twin.prepareForDevice();
    twin.trigger(0, 0.5f);
    engine.trigger(0, 0.5f);

    wave_device::begin({});
    ASSERT_TRUE(out.start());
    constexpr int kBlocks = 3 * kBuffers;
    for (int count = kBuffers; count < kBlocks; ++count) {
        wave_device::returnBuffer();
        ASSERT_TRUE(wave_device::waitForWrites(count + 1));
    }
    const auto blocks = wave_device::writtenBlocks();
    for (std::size_t block = 0; block < blocks.size(); ++block) {
        SCOPED_TRACE(block);
        std::vector<std::int16_t> expected(std::size_t{kDeviceBufferFrames} * 2);
        twin.renderBlock(expected.data(), kDeviceBufferFrames);
        EXPECT_EQ(blocks[block].samples, expected);
        EXPECT_EQ(placeOf(blocks[block].header), block % kOutputBufferCount);
    }
}

TEST_F(WaveOutTest, IgnoresEverythingButItsOwnCompletions) {
    wave_device::begin({});
    ASSERT_TRUE(out.start());
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
    wave_device::returnBuffer();
    ASSERT_TRUE(wave_device::waitForWrites(kBuffers + 2));
    out.stop();
    EXPECT_EQ(wave_device::writeCount(), kBuffers + 2);
}

TEST_F(WaveOutTest, StopEndsTheVoicesAndDropsWhatComesLate) {
    wave_device::begin({});
    ASSERT_TRUE(out.start());
    engine.trigger(0, 1.0f);
    wave_device::returnBuffer();
    ASSERT_TRUE(wave_device::waitForWrites(kBuffers + 1));
    out.stop();
    EXPECT_EQ(out.device, nullptr);
    EXPECT_FALSE(wave_device::isOpen());
    EXPECT_FALSE(voicesSound(engine));

    for (OutputBuffer& buffer : out.buffers) {
        done(&buffer.header);
    }
    out.stop();
    EXPECT_EQ(wave_device::writeCount(), kBuffers + 1);

    wave_device::begin({});
    ASSERT_TRUE(out.start());
    ASSERT_TRUE(out.start()) << "opens once more";
    EXPECT_EQ(wave_device::openCount(), 2);
    for (const auto& block : wave_device::writtenBlocks()) {
        EXPECT_EQ(std::count(block.samples.begin(), block.samples.end(), 0),
                  std::ptrdiff_t{kDeviceBufferFrames} * 2);
    }
    wave_device::returnBuffer();
    EXPECT_TRUE(wave_device::waitForWrites(2 * kBuffers + 1));
}

// Completions arrive on the device's own thread all the while, also between closing and reset.
TEST_F(WaveOutTest, SurvivesManyStartsAndStops) {
    constexpr int kCycles = 300;
    wave_device::begin({.returnsByItself = true});
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        const int before = wave_device::writeCount();
        ASSERT_TRUE(out.start());
        engine.trigger(0, 0.1f);
        ASSERT_TRUE(wave_device::waitForWrites(before + kBuffers + cycle % 7));
        out.stop();
        ASSERT_FALSE(voicesSound(engine));
    }
}

} // namespace
} // namespace percussomatic
