// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <cstdint>
#include <mutex>

namespace percussomatic {

// Waiting, priority and posted messages for the step clock's thread.

// Posts one step tick to the window. False if its message queue is full; no-op and true if the
// handle is null or the window is gone. Any thread.
bool postStepTick(WindowHandle window) noexcept;

// Raises the calling thread's priority and sets the timer resolution to one millisecond, also for
// when the program's windows are covered, until endClockThread().
void beginClockThread() noexcept;
void endClockThread() noexcept;

// Releases the lock, waits for wakeClock() or the time-out, and locks again. May wake up
// spuriously, and up to a millisecond after the time-out. A wakeClock() after the release is never
// missed.
void waitForWake(std::unique_lock<std::mutex>& lock);
void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t nanoseconds);
void wakeClock() noexcept; // any thread

} // namespace percussomatic
