// SPDX-License-Identifier: MIT
// Loading and locking. render_equality_test.cpp tests what the engine renders.
#include "audio/sound_engine.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>
#include <utility>

namespace percussomatic {
namespace {

using Engine = SoundEngine;

void loadShortWave(Engine& engine) {
    const std::vector<std::int16_t> frames(3000, 8000);
    const Bytes file = WaveBuilder().format({.sampleRate = 96000}).values16(frames).bytes();
    engine.loadSample(file.data(), file.size());
}

TEST(SoundEngineTest, RejectedFilesTakeNoIndex) {
    SoundEngine engine;
    const Bytes file = WaveBuilder().format({}).values16({1, 2}).bytes();
    EXPECT_EQ(engine.loadSample(file.data(), file.size()), 0);
    EXPECT_EQ(engine.loadSample(nullptr, file.size()), -1);
    EXPECT_EQ(engine.loadSample(file.data(), file.size() - 1), -1);
    EXPECT_EQ(engine.loadSample(file.data(), file.size()), 1);
}

TEST(SoundEngineTest, WhateverSilencesVoicesDropsPendingTriggers) {
    std::array<std::int16_t, 2 * 100> out{};
    const std::pair<void (*)(Engine&), bool> cases[] = {
        {[](Engine&) {}, true},
        {[](Engine& it) { it.stopAllVoicesRequest = 1; }, false},
        {[](Engine& it) { it.outputMuted = 1; }, false},
        {[](Engine& it) { it.deactivateAllVoices(); }, false}};
    for (const auto& [silence, sounds] : cases) {
        Engine engine;
        loadShortWave(engine);
        engine.renderTimedBlock(out.data(), 100, {0, 0});
        engine.triggerAt(0, 1.0f, 1'000'000'000 * std::int64_t{250} / 48000);
        silence(engine);
        for (const int firstFrame : {100, 200}) {
            EXPECT_EQ(out, decltype(out){}) << firstFrame;
            engine.renderTimedBlock(out.data(), 100, {0, firstFrame});
            engine.outputMuted = 0;
        }
        EXPECT_EQ(std::ranges::count(out, 0), sounds ? 100 : 200);
        EXPECT_EQ(engine.lateTriggerCount(), 0U);
    }
}

struct Operations {
    void (*write)(Engine&);
    void (*read)(const Engine&) = [](const Engine&) {};
};

constexpr Operations kOperations[] = {
    {[](Engine& it) { it.trigger(0, 0.1f); }},
    {[](Engine& it) { it.triggerAt(0, 0.1f, 0); }, [](const Engine& it) { it.lateTriggerCount(); }},
    {[](Engine& it) { it.setMasterVolume(0.5f); }},
    {[](Engine& it) { it.setAutoStop(true, 0.0f, 10, 5); }},
    {loadShortWave},
    {[](Engine& it) { it.deactivateAllVoices(); }},
    {[](Engine& it) { it.prepareForDevice(); }},
    {[](Engine& it) { it.outputMuted = 1, it.stopAllVoicesRequest = 1, it.outputMuted = 0; }},
    {[](Engine& it) { it.setSend(0, 1); }, [](const Engine& it) { it.getSend(0); }},
    {[](Engine& it) { it.setEffectEnabled(true); }, [](const Engine& it) { it.isEffectEnabled(); }},
    {[](Engine& it) { it.setEffectPreset(4); }, [](const Engine& it) { it.getEffectSettings(); }},
    {[](Engine& it) { it.setEffectSettings({}); }, [](const Engine& it) { it.getEffectReturn(); }},
    {[](Engine& it) { it.setEffectReturn(1); }, [](const Engine& it) { it.getEffectReturn(); }},
    {[](Engine& it) { it.setEffectRoomSize(1); }, [](const Engine& it) { it.getEffectRoomSize(); }},
    {[](Engine& it) { it.setEffectDamping(1); }, [](const Engine& it) { it.getEffectDamping(); }},
    {[](Engine& it) { it.setEffectWidth(1); }, [](const Engine& it) { it.getEffectWidth(); }},
    {[](Engine& it) { it.setEffectPreDelayMs(5); },
     [](const Engine& it) { it.getEffectPreDelayMs(); }},
};

// One thread writes, one reads and this one renders, with one pair of operations at a time. Run
// with the thread sanitizer to find races: the threads communicate only by relaxed atomics and take
// no other lock, so that only the engine's mutex can order their accesses. Without the sanitizer,
// the test still finds a mutex locked twice.
TEST(SoundEngineThreads, OperationsAndRendersShareNoStateOutsideTheMutex) {
    SoundEngine engine;
    engine.prepareForDevice();
    engine.setEffectEnabled(true);
    loadShortWave(engine);

    constexpr auto kRelaxed = std::memory_order_relaxed;
    std::atomic<std::size_t> current = 0;
    std::array<std::atomic<int>, 2> calls{};
    const auto repeat = [&](std::atomic<int>& count, const auto& call) {
        for (std::size_t i = 0; i < std::size(kOperations); i = current.load(kRelaxed)) {
            call(kOperations[i]);
            count.fetch_add(1, kRelaxed);
            std::this_thread::yield();
        }
    };
    std::thread writer([&] { repeat(calls[0], [&](const auto& now) { now.write(engine); }); });
    std::thread reader([&] { repeat(calls[1], [&](const auto& now) { now.read(engine); }); });

    std::array<std::int16_t, 128> out{};
    for (std::size_t i = 0; i < std::size(kOperations); ++i) {
        current.store(i, kRelaxed);
        const int enough[] = {calls[0].load(kRelaxed) + 5, calls[1].load(kRelaxed) + 5};
        while (calls[0].load(kRelaxed) < enough[0] || calls[1].load(kRelaxed) < enough[1]) {
            engine.trigger(0, 0.3f);
            engine.renderTimedBlock(out.data(), 64, {0, 64});
            engine.renderBlock(out.data(), 64);
            std::this_thread::yield();
        }
    }
    current.store(std::size(kOperations), kRelaxed);
    writer.join();
    reader.join();
    EXPECT_GT(engine.samples.size(), 1U);
}

} // namespace
} // namespace percussomatic
