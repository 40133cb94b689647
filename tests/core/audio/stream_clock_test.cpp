// SPDX-License-Identifier: MIT
// Steps on a virtual device: where they sound, measured in its frames.
#include "audio/stream_clock.h"

#include "audio/sound_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace percussomatic {
namespace {

constexpr double kNsPerMs = 1e6;

// A device that asks for a block whenever it has played one, and a rhythm whose steps are triggered
// some time after they were due.
struct Device {
    double driftPpm = 0.0;       // of the device's rate
    double periodMs = 0.0;       // blocks are only asked for at multiples of that
    double maxLateMs = 0.2;      // of the thread that renders, at random
    double gapMs = 0.0;          // the device stands still after a minute
    double maxTriggerLateMs = 1; // at random

    std::vector<std::int64_t> play(SoundEngine& engine, double bpm, int steps) {
        std::vector<std::int64_t> hits;
        std::vector<std::int16_t> out(std::size_t{2} * kDeviceBufferFrames);
        const double intervalNs = 15e9 / bpm, blockNs = 512e9 / 48000.0 / (1.0 + driftPpm * 1e-6);
        double dueNs = 1000.0 * kNsPerMs, arrivesNs = dueNs;
        for (std::int64_t block = 0; static_cast<int>(hits.size()) < steps; ++block) {
            double nowNs = static_cast<double>(block) * blockNs;
            nowNs += nowNs > 60e9 ? gapMs * kNsPerMs : 0.0;
            if (periodMs > 0.0) {
                nowNs = std::ceil(nowNs / (periodMs * kNsPerMs)) * periodMs * kNsPerMs;
            }
            nowNs += maxLateMs * kNsPerMs * random();
            for (; arrivesNs <= nowNs; arrivesNs = dueNs + maxTriggerLateMs * kNsPerMs * random()) {
                engine.triggerAt(0, 1.0f, static_cast<std::int64_t>(dueNs));
                dueNs += intervalNs;
            }
            const auto position = nextBlock(clock, static_cast<std::int64_t>(nowNs), 512);
            if (position) {
                engine.renderTimedBlock(out.data(), 512, *position);
            } else {
                engine.renderBlock(out.data(), 512);
            }
            for (std::int64_t frame = 0; frame < 512; ++frame) {
                if (out[static_cast<std::size_t>(2 * frame)] != 0) {
                    hits.push_back(block * 512 + frame);
                }
            }
        }
        return hits;
    }

    double random() { return static_cast<double>(generator()) / 4294967296.0; }

    StreamClock clock = {};
    std::mt19937 generator{1965};
};

void loadClick(SoundEngine& engine) {
    engine.samples.push_back({kDeviceRateHz, std::vector{1.0f}, std::vector{1.0f}, true});
}

struct Case {
    const char* name;
    Device device;
    double bpm;
    double maxErrorFrames; // of a distance
    bool late;             // some steps come too late
};

TEST(StreamClock, StepsLieAtTheirExactDistance) {
    constexpr double kReserveMs = kTriggerReserveNs / kNsPerMs;
    const Case cases[] = {
        {"slow", {}, 40.0, 0.0, false},
        {"medium", {}, 120.0, 0.0, false},
        {"fast", {.maxLateMs = 3.0}, 240.0, 0.0, false},
        {"between frames", {}, 133.7, 1.0, false},
        {"late within the reserve", {.maxTriggerLateMs = kReserveMs - 0.01}, 120.0, 0.0, false},
        {"late beyond the reserve", {.maxTriggerLateMs = kReserveMs + 30.0}, 120.0, 2000.0, true},
        {"periods", {.periodMs = 10.0, .maxTriggerLateMs = 3.0}, 240.0, 0.0, false},
        {"fast device", {.driftPpm = 200.0, .maxTriggerLateMs = 3.0}, 120.0, 12.0, false},
        {"slow device", {.driftPpm = -200.0, .maxTriggerLateMs = 3.0}, 120.0, 12.0, false},
        {"short gap", {.gapMs = 30.0}, 120.0, 1440.0, false},
        {"long gap", {.gapMs = 310.0}, 120.0, 6000.0, false}};
    for (Case each : cases) {
        SCOPED_TRACE(each.name);
        SoundEngine engine;
        loadClick(engine);
        constexpr int kSteps = 2000;
        const std::vector<std::int64_t> hits = each.device.play(engine, each.bpm, kSteps);
        ASSERT_EQ(hits.size(), kSteps);
        const double distance = 15.0 / each.bpm * 48000.0 * (1.0 + each.device.driftPpm * 1e-6);
        double maxError = 0.0;
        for (std::size_t step = 1; step < hits.size(); ++step) {
            const auto frames = static_cast<double>(hits[step] - hits[step - 1]);
            maxError = std::max(maxError, std::abs(frames - distance));
        }
        EXPECT_LE(maxError, each.maxErrorFrames);
        EXPECT_NEAR(static_cast<double>(hits.back() - hits.front()), distance * (kSteps - 1),
                    std::max(1.0, 5.0 * each.maxErrorFrames));
        EXPECT_EQ(engine.lateTriggerCount() > 0, each.late) << engine.lateTriggerCount();
    }
}

} // namespace
} // namespace percussomatic
