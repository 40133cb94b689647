#include "sequencer/step_clock.h"

#include "support/real_clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace percussomatic {
namespace {

using std::chrono::milliseconds;

// A little over whole milliseconds, so that a clock without a grid would lose one at every wait.
constexpr double kStepMs = 50.05;
constexpr double kBpm = 15000.0 / kStepMs;
constexpr milliseconds kPatience{5000};

// How late each step was, in ms. The step that is least late gives the place of the grid.
std::vector<double> latenessMs(const std::vector<std::int64_t>& ticks) {
    std::vector<double> late;
    for (const std::int64_t tick : ticks) {
        const double sinceFirstMs = static_cast<double>(tick - ticks.front()) / 1e6;
        late.push_back(sinceFirstMs - kStepMs * static_cast<double>(late.size()));
    }
    const double least = *std::min_element(late.begin(), late.end());
    for (double& each : late) {
        each -= least;
    }
    return late;
}

TEST(StepClockInRealTime, KeepsItsMeanIntervalWithoutDrift) {
    constexpr std::size_t kSteps = 20;
    constexpr double kStepLateMs = 20.0, kDriftMs = 5.0, kMeanMs = 1.0;
    // A crowded machine may spoil a step or two, or a run; a fault spoils them all.
    constexpr std::ptrdiff_t kSpoilt = 2;
    constexpr int kAttempts = 3;
    double stepLate = 0.0, drift = 0.0, mean = 0.0;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        takeTicks(0, kPatience);
        runClock(kBpm);
        setClockTempo(kBpm); // from another thread than the one that reads it
        const std::vector<std::int64_t> ticks = takeTicks(kSteps, kPatience);
        clockStop();
        ASSERT_GE(ticks.size(), kSteps);

        std::vector<double> late = latenessMs(ticks);
        const auto middle = late.begin() + kSteps / 2;
        drift = std::max(*std::min_element(late.begin(), middle),
                         *std::min_element(middle, late.end()));
        mean = static_cast<double>(ticks.back() - ticks.front()) / 1e6 /
               static_cast<double>(ticks.size() - 1);
        std::sort(late.begin(), late.end());
        stepLate = *(late.end() - 1 - kSpoilt);
        if (stepLate <= kStepLateMs && drift <= kDriftMs && std::abs(mean - kStepMs) <= kMeanMs) {
            break;
        }
    }
    clockShutdown();
    EXPECT_LE(stepLate, kStepLateMs) << "late by ms";
    EXPECT_LE(drift, kDriftMs) << "one half later than the other by ms";
    EXPECT_NEAR(mean, kStepMs, kMeanMs);
}

TEST(StepClockInRealTime, LongWaitsEndAtOnceOnStopAndShutdown) {
    constexpr double kStepEveryFifteenSeconds = 1.0;
    const auto begin = std::chrono::steady_clock::now();
    takeTicks(0, kPatience);
    runClock(kStepEveryFifteenSeconds);
    EXPECT_EQ(takeTicks(1, milliseconds(50)).size(), 0u); // the thread is in its wait by now
    clockStop();
    runClock(kBpm); // a new grid, not the end of the long wait
    EXPECT_GE(takeTicks(1, kPatience).size(), 1u);
    clockStop();
    runClock(kStepEveryFifteenSeconds);
    takeTicks(1000, milliseconds(50));
    clockShutdown();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 2 * kPatience);
}

} // namespace
} // namespace percussomatic
