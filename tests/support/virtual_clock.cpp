// SPDX-License-Identifier: MIT
#include "support/virtual_clock.h"

#include "clock_thread.h"
#include "sequencer/step_clock.h"
#include "system_time.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <utility>

namespace percussomatic {

namespace {

struct VirtualTime {
    std::atomic<std::int64_t> nowNs = 0;
    std::atomic<int> threadCount = 0;

    // Guarded by the step clock's mutex, which its thread must release before posting.
    std::condition_variable wake, changed;
    bool waiting = false;
    bool due = false;
    std::int64_t wakeNs = 0;
    std::uint32_t stops = 0; // of the step clock, when the wait began
    std::deque<std::int64_t> latenessNs, postingNs;
    std::vector<PostedTick> posted;
} time;

std::int64_t takeFirst(std::deque<std::int64_t>& script) {
    if (script.empty()) {
        return 0;
    }
    const std::int64_t first = script.front();
    script.pop_front();
    return first;
}

} // namespace

std::int64_t counterNs() noexcept {
    return time.nowNs;
}

std::uint32_t tickCountMs() noexcept {
    return static_cast<std::uint32_t>(counterNs() / kNsPerMs);
}

bool postStepTick(WindowHandle window) noexcept {
    const std::lock_guard lock(stepClock().mutex);
    const std::int64_t duration = takeFirst(time.postingNs);
    if (duration == kFailedPost) {
        return false;
    }
    time.posted.push_back({window, time.nowNs});
    time.nowNs += duration;
    return true;
}

void beginClockThread() noexcept {
    ++time.threadCount;
}

void endClockThread() noexcept {
    --time.threadCount;
}

void wakeClock() noexcept {
    time.wake.notify_all();
}

void waitForWake(std::unique_lock<std::mutex>& lock) {
    time.wake.wait(lock);
}

void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t nanoseconds) {
    const StepClock& clock = stepClock();
    time.wakeNs =
        time.nowNs + waitMilliseconds(nanoseconds) * kNsPerMs + takeFirst(time.latenessNs);
    time.stops = clock.stops;
    time.due = false;
    time.waiting = true;
    time.changed.notify_all();
    time.wake.wait(lock, [&] {
        return time.due || clock.quit || !clock.clockRunning || clock.stops != time.stops;
    });
    time.waiting = false;
    time.changed.notify_all();
}

void resetVirtualClock() {
    time.nowNs = 0;
    scriptLateness({}, {});
    takePostedTicks();
}

void passTimeTo(std::int64_t ns) {
    StepClock& clock = stepClock();
    std::unique_lock lock(clock.mutex);
    const auto settled = [&] {
        return clock.clockRunning ? time.waiting && !time.due && time.stops == clock.stops
                                  : !time.waiting;
    };
    while (true) {
        if (!time.changed.wait_for(lock, std::chrono::seconds(20), settled)) {
            std::fputs("The step clock's thread does not respond\n", stderr);
            std::abort();
        }
        if (!clock.clockRunning || time.wakeNs > ns) {
            break;
        }
        time.nowNs = std::max(time.nowNs.load(), time.wakeNs);
        time.due = true;
        wakeClock();
    }
    time.nowNs = std::max(time.nowNs.load(), ns);
}

void scriptLateness(const std::vector<std::int64_t>& waitsNs,
                    const std::vector<std::int64_t>& postsNs) {
    const std::lock_guard lock(stepClock().mutex);
    time.latenessNs.assign(waitsNs.begin(), waitsNs.end());
    time.postingNs.assign(postsNs.begin(), postsNs.end());
}

std::vector<PostedTick> takePostedTicks() {
    const std::lock_guard lock(stepClock().mutex);
    return std::exchange(time.posted, {});
}

int clockThreadCount() {
    return time.threadCount;
}

} // namespace percussomatic
