// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

namespace percussomatic {

// Step clock: one thread waits for step deadlines on an absolute grid and posts a tick to the
// panel's window. The GUI thread decides what a step plays, and a late wake-up never shifts later
// steps.
struct StepClock {
    std::mutex mutex;
    WindowHandle window = nullptr; // guarded by mutex
    double clockBpm = 120.0;       // guarded by mutex
    bool clockRunning = false;     // guarded by mutex
    bool quit = false;             // guarded by mutex
    std::int64_t startNs = 0;      // guarded by mutex; where the grid begins
    // Guarded by mutex. Of ticks that were posted but not handled, oldest first.
    std::array<std::int64_t, 32> deadlines{};
    std::size_t deadlineCount = 0;
    // Guarded by mutex. Counts stops, so that a stop and a start between two wake-ups still begin a
    // new grid.
    std::uint32_t stops = 0;
    std::uint32_t dropped = 0; // guarded by mutex; steps lost since the program started
    std::thread thread;        // GUI thread only
};

StepClock& stepClock() noexcept;

// Nanoseconds from one sixteenth note to the next: 125e6 at 120 BPM. Clamped to 1 BPM or more.
double stepIntervalNs(double tempoBpm) noexcept;

// Start of the next interval: the deadline itself, or `now` if the tick was posted more than one
// interval late. Steps lost that way are dropped rather than played in a burst.
std::int64_t nextGridBaseNs(std::int64_t now, std::int64_t deadline, double intervalNs) noexcept;

// Number of steps dropped by restarting the grid at `now`; 0 if the grid is kept.
std::uint32_t droppedSteps(std::int64_t now, std::int64_t deadline, double intervalNs) noexcept;

// The remaining time in milliseconds, rounded up, at most one day.
std::int64_t waitMilliseconds(std::int64_t remainingNs) noexcept;

// All on the GUI thread.

void setClockWindow(WindowHandle window); // where ticks are posted

// The first tick is due one interval after startNs. A running clock keeps its grid.
void runClock(double tempoBpm, std::int64_t startNs);
void setClockTempo(double tempoBpm); // from the next interval on

// When the tick that is being handled was due. Nullopt if that is unknown: the clock has been
// stopped since, or more ticks are waiting than it keeps deadlines for.
std::optional<std::int64_t> takeDeadline();

std::uint32_t droppedStepCount(); // since the program started
void clockStop();                 // the thread stays alive
void clockShutdown();             // ends and joins the thread

} // namespace percussomatic
