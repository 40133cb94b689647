#include "audio/sound_engine.h"
#include "support/counting_new.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

// What it renders is in render_equality_test.cpp.
namespace percussomatic {
namespace {

TEST(SoundEngineTest, RejectedFilesTakeNoIndex) {
    SoundEngine engine;
    const Bytes file = WaveBuilder().format({}).values16({1, 2}).bytes();
    EXPECT_EQ(engine.loadSample(file.data(), file.size()), 0);
    EXPECT_EQ(engine.loadSample(nullptr, file.size()), -1);
    EXPECT_EQ(engine.loadSample(file.data(), file.size() - 1), -1);
    EXPECT_EQ(engine.loadSample(file.data(), file.size()), 1);
}

TEST(SoundEngineTest, RenderAllocatesNothing) {
    SoundEngine engine;
    engine.prepareForDevice();
    const std::vector<float> recording(20000, 0.25f);
    engine.samples.push_back({44100, recording, recording, true});
    engine.setSend(0, 0.5f);
    engine.setEffectEnabled(true);
    for (std::size_t i = 0; i < kVoiceCount; ++i) {
        engine.trigger(0, 0.1f);
    }
    std::vector<std::int16_t> out(16384);
    const std::size_t before = allocationCount();
    for (const std::uint32_t frames : {512U, 1U, 8192U}) {
        engine.renderBlock(out.data(), frames);
    }
    engine.stopAllVoicesRequest = 1;
    engine.renderBlock(out.data(), 512);
    engine.outputMuted = 1;
    engine.renderBlock(out.data(), 512);
    EXPECT_EQ(allocationCount(), before);
    EXPECT_GT(before, 0U) << "the count does not count";
}

using Engine = SoundEngine;

void loadShortWave(Engine& engine) {
    const std::vector<std::int16_t> frames(3000, 8000);
    const Bytes file = WaveBuilder().format({.sampleRate = 96000}).values16(frames).bytes();
    engine.loadSample(file.data(), file.size());
}

struct Turn {
    void (*change)(Engine&);
    void (*read)(const Engine&) = [](const Engine&) {};
};

constexpr Turn kTurns[] = {
    {[](Engine& it) { it.trigger(0, 0.1f); }},
    {[](Engine& it) { it.setMasterVolume(0.5f); }},
    {[](Engine& it) { it.setAutoStop(true, 0.0f, 10, 5); }},
    {loadShortWave},
    {[](Engine& it) { it.deactivateAllVoices(); }},
    {[](Engine& it) { it.prepareForDevice(); }},
    {[](Engine& it) { it.outputMuted = 1, it.stopAllVoicesRequest = 1, it.outputMuted = 0; }},
    {[](Engine& it) { it.setSend(0, 0.5f); }, [](const Engine& it) { it.getSend(0); }},
    {[](Engine& it) { it.setEffectEnabled(true); }, [](const Engine& it) { it.isEffectEnabled(); }},
    {[](Engine& it) { it.setEffectPreset(4); }, [](const Engine& it) { it.getEffectReturn(); }},
    {[](Engine& it) { it.setEffectReturn(0.5f); }, [](const Engine& it) { it.getEffectReturn(); }},
    {[](Engine& it) { it.setEffectRoomSize(1); }, [](const Engine& it) { it.getEffectRoomSize(); }},
    {[](Engine& it) { it.setEffectDamping(1); }, [](const Engine& it) { it.getEffectDamping(); }},
    {[](Engine& it) { it.setEffectWidth(0.5f); }, [](const Engine& it) { it.getEffectWidth(); }},
    {[](Engine& it) { it.setEffectPreDelayMs(5); },
     [](const Engine& it) { it.getEffectPreDelayMs(); }},
};

// One thread changes, one reads, this one renders, all through the same operation at a time. The
// verdict is the thread sanitizer's: the threads keep step by relaxed atomics, and no other lock
// comes in between, so that only the engine's mutex may order them. Without it, this still finds a
// lock taken twice.
TEST(SoundEngineThreads, OperationsAndRendersMeetOnlyAtTheMutex) {
    SoundEngine engine;
    engine.prepareForDevice();
    engine.setEffectEnabled(true);
    loadShortWave(engine);

    std::atomic<std::size_t> turn = 0;
    std::array<std::atomic<int>, 2> calls{};
    const auto repeat = [&](std::atomic<int>& count, const auto& operation) {
        for (std::size_t now = 0; now < std::size(kTurns);
             now = turn.load(std::memory_order_relaxed)) {
            operation(kTurns[now]);
            count.fetch_add(1, std::memory_order_relaxed);
            std::this_thread::yield();
        }
    };
    std::thread changing([&] { repeat(calls[0], [&](const Turn& now) { now.change(engine); }); });
    std::thread reading([&] { repeat(calls[1], [&](const Turn& now) { now.read(engine); }); });

    std::array<std::int16_t, 128> out{};
    for (std::size_t now = 0; now < std::size(kTurns); ++now) {
        turn.store(now, std::memory_order_relaxed);
        const auto called = [&calls](std::size_t thread) {
            return calls[thread].load(std::memory_order_relaxed);
        };
        const int enough[] = {called(0) + 5, called(1) + 5};
        while (called(0) < enough[0] || called(1) < enough[1]) {
            engine.trigger(0, 0.3f);
            engine.renderBlock(out.data(), 64);
            std::this_thread::yield();
        }
    }
    turn.store(std::size(kTurns), std::memory_order_relaxed);
    changing.join();
    reading.join();
    EXPECT_GT(engine.samples.size(), 1U);
}

} // namespace
} // namespace percussomatic
