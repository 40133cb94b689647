#include "audio/sound_engine.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

namespace percussomatic {
namespace {

void loadShortWave(SoundEngine& engine) {
    const Bytes file = WaveBuilder()
                           .format({.sampleRate = 96000})
                           .values16(std::vector<std::int16_t>(3000, 8000))
                           .bytes();
    engine.loadSample(file.data(), file.size());
}

using Engine = SoundEngine;

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

// One thread changes, one reads, this one renders, all through the same operation at a
// time. The verdict is the thread sanitizer's, and only the engine's mutex may order
// them: the threads keep step by relaxed atomics, and no other locking operation comes
// in between that would cover for a missing lock. Without the sanitizer, this still
// finds a lock taken twice.
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
        const int enough[] = {calls[0].load(std::memory_order_relaxed) + 5,
                              calls[1].load(std::memory_order_relaxed) + 5};
        while (calls[0].load(std::memory_order_relaxed) < enough[0] ||
               calls[1].load(std::memory_order_relaxed) < enough[1]) {
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
