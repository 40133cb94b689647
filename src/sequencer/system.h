#pragma once

#include <cstdint>
#include <mutex>
#include <string>

namespace percussomatic {

// What the sequencer asks of the system it runs on: implemented once over Win32 and once, with a
// clock of its own, by the native tests.

// A window of the system, or null. Compared and passed on, never looked into.
using WindowHandle = void*;

// The panel's window; null before it exists and while it is being destroyed. GUI thread.
WindowHandle mainWindow() noexcept;

// Timers of the main window by the ids that its procedure knows them by. GUI thread.
enum class WindowTimer : std::uint32_t { powerOff = 2, cardInsertion = 3, midiGlide = 4 };
void startTimer(WindowTimer timer, unsigned periodMs);
void stopTimer(WindowTimer timer);

// Milliseconds since some fixed point; wraps. GUI thread.
std::uint32_t tickCountMs() noexcept;

// Nanoseconds of a monotonic high-resolution counter. Any thread.
std::int64_t counterNs() noexcept;

// Posts one step tick to the window, silently not when it is null or no window any more. Any
// thread.
void postStepTick(WindowHandle window) noexcept;

// Raises the calling thread above the others and makes its waits exact to a millisecond, until the
// end.
void beginClockThread() noexcept;
void endClockThread() noexcept;

// Releases the lock, waits for wakeClock() or that many milliseconds, and locks again. May return
// early for no reason. A call of wakeClock() after the release is never missed.
void waitForWake(std::unique_lock<std::mutex>& lock);
void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t milliseconds);
void wakeClock() noexcept;

// Tells the player of something that went wrong and waits until it has been read. GUI thread.
void showProblem(const std::wstring& text);

// Shows who leads the tempo, where that is on display at all. GUI thread.
void showSyncStatus(bool externalSync, const std::wstring& text);

} // namespace percussomatic
