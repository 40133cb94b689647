// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <cstdint>
#include <vector>

namespace percussomatic {

// Fake time, which passes only in passTimeTo(). The step clock's thread waits on a condition
// variable as in the program, but its waits end when the fake time reaches them. Only one thread
// runs at a time, so every run is identical. GUI thread; start and stop the clock between calls.

inline constexpr std::int64_t kNsPerMs = 1'000'000;

struct PostedTick {
    WindowHandle window = nullptr;
    std::int64_t atNs = 0;

    bool operator==(const PostedTick&) const = default;
};

// Resets the time to 0, and clears scripts and posted ticks. The clock must not have a thread.
void resetVirtualClock();

// Ends all waits and posts all ticks that are due by then.
void passTimeTo(std::int64_t ns);

inline constexpr std::int64_t kFailedPost = -1;

// Lateness of the next waits (negative: early), and duration of the next posts or kFailedPost.
void scriptLateness(const std::vector<std::int64_t>& waitsNs,
                    const std::vector<std::int64_t>& postsNs = {});

// Ticks posted since the last call.
std::vector<PostedTick> takePostedTicks();

int clockThreadCount(); // threads that are running

} // namespace percussomatic
