#include "sequencer/step_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <vector>

// The clock in real time, in place of the virtual one: its waits are the condition variable's own.
namespace percussomatic {

namespace {

constexpr std::size_t kSteps = 40;

std::mutex postedMutex;
std::condition_variable posted, wake;
std::vector<std::int64_t> postedNs; // guarded by postedMutex

} // namespace

std::int64_t counterNs() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

void postStepTick(WindowHandle) noexcept {
    const std::lock_guard lock(postedMutex);
    postedNs.push_back(counterNs());
    posted.notify_all();
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

TEST(StepClockInRealTime, KeepsItsMeanInterval) {
    // A little over whole milliseconds, so that a clock without a grid would lose one at each wait.
    constexpr double kStepMs = 25.05, kBpm = 15000.0 / kStepMs;
    double mean = 0.0;
    // A crowded machine may spoil a run; a fault spoils them all.
    for (int attempt = 0; attempt < 3 && std::abs(mean - kStepMs) > 0.5; ++attempt) {
        runClock(kBpm);
        setClockTempo(kBpm); // from another thread than the one that reads it
        std::unique_lock lock(postedMutex);
        ASSERT_TRUE(posted.wait_for(lock, std::chrono::seconds(5),
                                    [] { return postedNs.size() >= kSteps; }));
        mean = static_cast<double>(postedNs.back() - postedNs.front()) / 1e6 /
               static_cast<double>(postedNs.size() - 1);
        lock.unlock();
        clockStop();
        lock.lock();
        postedNs.clear();
    }
    clockShutdown();
    EXPECT_NEAR(mean, kStepMs, 0.5);
}

} // namespace percussomatic
