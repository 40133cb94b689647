// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <cstdint>
#include <mutex>
#include <thread>

namespace percussomatic {

// Step clock: keeps time and decides nothing. One thread waits for step deadlines on an absolute
// grid and posts a tick to the panel's window; what a step plays is the GUI thread's business. A
// late wake-up therefore never shifts later steps.
struct StepClock {
    std::mutex mutex;
    WindowHandle window = nullptr; // guarded by mutex
    double clockBpm = 120.0;       // guarded by mutex
    bool clockRunning = false;     // guarded by mutex
    bool quit = false;             // guarded by mutex
    // Guarded by mutex. Counts stops, so that a stop and a start between two wakes begin a new
    // grid.
    std::uint32_t stops = 0;
    std::uint32_t dropped = 0; // guarded by mutex; steps since the start of the program
    std::thread thread;        // GUI thread only
};

StepClock& stepClock() noexcept;

// Nanoseconds from one sixteenth to the next: 125e6 at 120 BPM. Below 1 BPM the same as at 1.
double stepIntervalNs(double tempoBpm) noexcept;

// Where the next interval begins: at the deadline itself, however late the tick was posted. If the
// tick was more than one interval late, at `now`: the lost steps are dropped, not played in a
// burst.
std::int64_t nextGridBaseNs(std::int64_t now, std::int64_t deadline, double intervalNs) noexcept;

// Whole intervals that such a new beginning drops; 0 while the grid goes on.
std::uint32_t droppedSteps(std::int64_t now, std::int64_t deadline, double intervalNs) noexcept;

// The milliseconds to wait for that many nanoseconds: rounded up, at most a day.
std::int64_t waitMilliseconds(std::int64_t remainingNs) noexcept;

// All on the GUI thread.
void setClockWindow(WindowHandle window); // where ticks are posted
void runClock(double tempoBpm);           // first tick one interval from now; keeps a running grid
void setClockTempo(double tempoBpm);      // takes effect from the next interval on
std::uint32_t droppedStepCount();         // since the start of the program
void clockStop();                         // the thread keeps waiting
void clockShutdown();                     // ends and joins the thread

} // namespace percussomatic
