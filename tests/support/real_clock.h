#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace percussomatic {

// The step clock in real time: its waits are the condition variable's own, its ticks are kept. For
// a test program of its own, in place of the virtual clock.

// Waits until so many ticks have been posted since the last call that took them; their times, or
// fewer of them when that takes longer than `atMost`. Any thread.
std::vector<std::int64_t> takeTicks(std::size_t count, std::chrono::milliseconds atMost);

} // namespace percussomatic
