#include "sequencer/step_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace percussomatic {

namespace {

using std::chrono::milliseconds;

std::mutex postedMutex;
std::condition_variable postedMore, wake;
std::vector<std::int64_t> postedNs; // guarded by postedMutex

} // namespace

// The clock in real time, in place of the virtual one: its waits are the condition variable's own.

std::int64_t counterNs() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

void postStepTick(WindowHandle) noexcept {
    const std::lock_guard lock(postedMutex);
    postedNs.push_back(counterNs());
    postedMore.notify_all();
}

void beginClockThread() noexcept {}

void endClockThread() noexcept {}

void waitForWake(std::unique_lock<std::mutex>& lock) {
    wake.wait(lock);
}

void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t milliseconds) {
    wake.wait_for(lock, std::chrono::milliseconds(milliseconds));
}

void wakeClock() noexcept {
    wake.notify_all();
}

namespace {

// A little over whole milliseconds, so that a clock without a grid would lose one at every wait.
constexpr double kStepMs = 25.05;
constexpr double kBpm = 15000.0 / kStepMs;
constexpr milliseconds kPatience{5000};

// The times of so many ticks posted since the last call, or of fewer when that takes longer.
std::vector<std::int64_t> takeTicks(std::size_t count, milliseconds atMost) {
    std::unique_lock lock(postedMutex);
    postedMore.wait_for(lock, atMost, [&] { return postedNs.size() >= count; });
    return std::exchange(postedNs, {});
}

TEST(StepClockInRealTime, KeepsItsMeanInterval) {
    constexpr std::size_t kSteps = 40;
    double mean = 0.0;
    // A crowded machine may spoil a run; a fault spoils them all.
    for (int attempt = 0; attempt < 3 && std::abs(mean - kStepMs) > 0.5; ++attempt) {
        takeTicks(0, kPatience);
        runClock(kBpm);
        setClockTempo(kBpm); // from another thread than the one that reads it
        const std::vector<std::int64_t> ticks = takeTicks(kSteps, kPatience);
        clockStop();
        ASSERT_GE(ticks.size(), kSteps);
        mean = static_cast<double>(ticks.back() - ticks.front()) / 1e6 /
               static_cast<double>(ticks.size() - 1);
    }
    clockShutdown();
    EXPECT_NEAR(mean, kStepMs, 0.5);
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
