// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <cstdint>
#include <vector>

namespace percussomatic {

// Time for the step clock that passes only when a test lets it. The clock's thread waits on its own
// condition variable as it does in earnest, but its waits end when passTimeTo() reaches them:
// hundreds of steps take no time and come out the same in every run, since one thread moves at a
// time. Stop, start, change the tempo or shut down between two calls, on the GUI thread like
// everything here.

inline constexpr std::int64_t kNsPerMs = 1'000'000;

struct PostedTick {
    WindowHandle window = nullptr;
    std::int64_t atNs = 0;

    bool operator==(const PostedTick&) const = default;
};

struct ClockThreads {
    int begun = 0, ended = 0;

    bool operator==(const ClockThreads&) const = default;
};

// Time 0, nothing scripted or posted. Only while the clock has no thread.
void resetVirtualClock();

// Lets all waits end and ticks be posted that are due by then.
void passTimeTo(std::int64_t ns);

// How late the next waits end, in turn (below 0: early); how long the next posts take.
void scriptLateness(const std::vector<std::int64_t>& ns);
void scriptPosting(const std::vector<std::int64_t>& ns);

// What has been posted since the last call.
std::vector<PostedTick> takePostedTicks();
ClockThreads clockThreads();

} // namespace percussomatic
