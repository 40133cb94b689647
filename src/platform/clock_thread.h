// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <cstdint>
#include <mutex>

namespace percussomatic {

// What the step clock's thread asks of the system.

// Posts one step tick to the window. No-op if the handle is null or the window is gone. Any thread.
void postStepTick(WindowHandle window) noexcept;

// Raises the calling thread's priority and makes its waits exact to a millisecond, until
// endClockThread().
void beginClockThread() noexcept;
void endClockThread() noexcept;

// Releases the lock, waits for wakeClock() or that many milliseconds, and locks again. May return
// early without a reason. A wakeClock() after the release is never missed.
void waitForWake(std::unique_lock<std::mutex>& lock);
void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t milliseconds);
void wakeClock() noexcept; // any thread

} // namespace percussomatic
