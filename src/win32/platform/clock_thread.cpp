// SPDX-License-Identifier: MIT
#include "clock_thread.h"

#include "sequencer/step_clock.h"
#include "win32/messages.h"

#include <windows.h>

#include <mmsystem.h>

#include <bit>
#include <iterator>

namespace percussomatic {

namespace {

constexpr DWORD kHighResolutionTimer = 0x2; // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION

HANDLE wakeEvent() noexcept { // auto-reset; stays set until the next wait
    static HANDLE const event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    return event;
}

// Clock thread only. Null before Windows 10 version 1803; waits then have whole milliseconds.
HANDLE preciseTimer = nullptr;

// Windows 11 takes the timer resolution from programs whose windows are all covered or minimised,
// unless they object. Older systems do not have the function or the option.
void keepTimerResolution() noexcept {
    struct PowerThrottling {                               // PROCESS_POWER_THROTTLING_STATE
        ULONG version = 1, controlMask = 4, stateMask = 0; // 4: ignore timer resolution
    } throttling;
    constexpr int kPowerThrottlingClass = 4; // ProcessPowerThrottling
    using SetInformation = BOOL(WINAPI*)(HANDLE, int, void*, DWORD);
    const auto set = std::bit_cast<SetInformation>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetProcessInformation"));
    if (set != nullptr) {
        set(GetCurrentProcess(), kPowerThrottlingClass, &throttling, sizeof throttling);
    }
}

bool startPreciseTimer(std::int64_t nanoseconds) noexcept {
    LARGE_INTEGER due{};
    due.QuadPart = -((nanoseconds + 99) / 100); // relative, in units of 100 ns, rounded up
    return preciseTimer != nullptr &&
           SetWaitableTimer(preciseTimer, &due, 0, nullptr, nullptr, FALSE) != 0;
}

} // namespace

bool postStepTick(WindowHandle window) noexcept {
    auto* const target = static_cast<HWND>(window);
    return target == nullptr || IsWindow(target) == 0 ||
           PostMessageW(target, kStepTickMessage, 0, 0) != 0;
}

void beginClockThread() noexcept {
    keepTimerResolution();
    timeBeginPeriod(1);
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL);
    preciseTimer = CreateWaitableTimerExW(nullptr, nullptr, kHighResolutionTimer, TIMER_ALL_ACCESS);
}

void endClockThread() noexcept {
    if (preciseTimer != nullptr) {
        CloseHandle(preciseTimer);
        preciseTimer = nullptr;
    }
    timeEndPeriod(1);
}

// Not std::condition_variable, which in MinGW wakes a millisecond late and measures time-outs by
// the wall clock, which may be changed.
void waitForWake(std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    WaitForSingleObject(wakeEvent(), INFINITE);
    lock.lock();
}

void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t nanoseconds) {
    lock.unlock();
    if (startPreciseTimer(nanoseconds)) {
        const HANDLE either[] = {wakeEvent(), preciseTimer};
        WaitForMultipleObjects(static_cast<DWORD>(std::size(either)), either, FALSE, INFINITE);
    } else {
        WaitForSingleObject(wakeEvent(), static_cast<DWORD>(waitMilliseconds(nanoseconds)));
    }
    lock.lock();
}

void wakeClock() noexcept {
    SetEvent(wakeEvent());
}

} // namespace percussomatic
