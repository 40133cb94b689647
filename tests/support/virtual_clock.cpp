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
    std::atomic<int> threadsBegun = 0, threadsEnded = 0;

    // Guarded by the step clock's mutex.
    std::condition_variable wake, changed;
    bool waiting = false;
    bool due = false;
    std::int64_t wakeNs = 0;
    std::uint32_t stops = 0; // of the step clock, when the wait began
    std::deque<std::int64_t> latenessNs;

    std::mutex postMutex;
    std::deque<std::int64_t> postingNs; // guarded by postMutex
    std::vector<PostedTick> posted;     // guarded by postMutex
};

VirtualTime& virtualTime() {
    static VirtualTime time;
    return time;
}

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
    return virtualTime().nowNs;
}

void postStepTick(WindowHandle window) noexcept {
    VirtualTime& time = virtualTime();
    const std::lock_guard lock(time.postMutex);
    time.posted.push_back({window, time.nowNs});
    time.nowNs += takeFirst(time.postingNs);
}

void beginClockThread() noexcept {
    ++virtualTime().threadsBegun;
}

void endClockThread() noexcept {
    ++virtualTime().threadsEnded;
}

void wakeClock() noexcept {
    virtualTime().wake.notify_all();
}

void waitForWake(std::unique_lock<std::mutex>& lock) {
    virtualTime().wake.wait(lock);
}

void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t milliseconds) {
    VirtualTime& time = virtualTime();
    const StepClock& clock = stepClock();
    time.wakeNs = time.nowNs + milliseconds * kNsPerMs + takeFirst(time.latenessNs);
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
    VirtualTime& time = virtualTime();
    time.nowNs = 0;
    time.threadsBegun = 0;
    time.threadsEnded = 0;
    scriptLateness({});
    scriptPosting({});
    takePostedTicks();
}

void passTimeTo(std::int64_t ns) {
    // Only a thread that is lost for good takes this long.
    constexpr std::chrono::seconds kLost{20};
    VirtualTime& time = virtualTime();
    StepClock& clock = stepClock();
    std::unique_lock lock(clock.mutex);
    const auto settled = [&] {
        return clock.clockRunning ? time.waiting && !time.due && time.stops == clock.stops
                                  : !time.waiting;
    };
    for (;;) {
        if (!time.changed.wait_for(lock, kLost, settled)) {
            std::fputs("The step clock's thread neither waits nor stands still\n", stderr);
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

void scriptLateness(const std::vector<std::int64_t>& ns) {
    const std::lock_guard lock(stepClock().mutex);
    virtualTime().latenessNs.assign(ns.begin(), ns.end());
}

void scriptPosting(const std::vector<std::int64_t>& ns) {
    const std::lock_guard lock(virtualTime().postMutex);
    virtualTime().postingNs.assign(ns.begin(), ns.end());
}

std::vector<PostedTick> takePostedTicks() {
    const std::lock_guard lock(virtualTime().postMutex);
    return std::exchange(virtualTime().posted, {});
}

ClockThreads clockThreads() {
    return {virtualTime().threadsBegun, virtualTime().threadsEnded};
}

} // namespace percussomatic
