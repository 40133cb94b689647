// SPDX-License-Identifier: MIT
#include "clock_thread.h"

#include "win32/messages.h"

#include <windows.h>

#include <mmsystem.h>

namespace percussomatic {

namespace {

SRWLOCK wakeLock = SRWLOCK_INIT;
CONDITION_VARIABLE wakeCondition = CONDITION_VARIABLE_INIT;

void sleepUntilWoken(std::unique_lock<std::mutex>& lock, DWORD milliseconds) {
    AcquireSRWLockExclusive(&wakeLock);
    lock.unlock();
    SleepConditionVariableSRW(&wakeCondition, &wakeLock, milliseconds, 0);
    ReleaseSRWLockExclusive(&wakeLock);
    lock.lock();
}

} // namespace

bool postStepTick(WindowHandle window) noexcept {
    auto* const target = static_cast<HWND>(window);
    return target == nullptr || IsWindow(target) == 0 ||
           PostMessageW(target, kStepTickMessage, 0, 0) != 0;
}

void beginClockThread() noexcept {
    timeBeginPeriod(1);
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL);
}

void endClockThread() noexcept {
    timeEndPeriod(1);
}

// Uses the Win32 condition variable, because std::condition_variable of MinGW wakes a millisecond
// late and measures time-outs by the wall clock, which may be changed.
void waitForWake(std::unique_lock<std::mutex>& lock) {
    sleepUntilWoken(lock, INFINITE);
}

void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t milliseconds) {
    sleepUntilWoken(lock, static_cast<DWORD>(milliseconds));
}

void wakeClock() noexcept {
    // Blocks while a waiter has released its own lock but does not sleep yet, so that no wake is
    // lost.
    AcquireSRWLockExclusive(&wakeLock);
    ReleaseSRWLockExclusive(&wakeLock);
    WakeAllConditionVariable(&wakeCondition);
}

} // namespace percussomatic
