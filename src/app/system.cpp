// The sequencer's system calls, over Win32.

#include "sequencer/system.h"
#include "app/main_window.h"
#include "ui/message_loop.h"

#include <mmsystem.h>

namespace percussomatic {

namespace {

HWND theMainWindow = nullptr;

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

void setMainWindow(HWND window) noexcept {
    theMainWindow = window;
}

WindowHandle mainWindow() noexcept {
    return theMainWindow;
}

void startTimer(WindowTimer timer, unsigned periodMs) {
    if (theMainWindow != nullptr) {
        SetTimer(theMainWindow, static_cast<UINT_PTR>(timer), periodMs, nullptr);
    }
}

void stopTimer(WindowTimer timer) {
    if (theMainWindow != nullptr) {
        KillTimer(theMainWindow, static_cast<UINT_PTR>(timer));
    }
}

std::uint32_t tickCountMs() noexcept {
    return GetTickCount();
}

std::int64_t counterNs() noexcept {
    constexpr std::int64_t kNsPerSecond = 1'000'000'000;
    static const std::int64_t frequency = [] {
        LARGE_INTEGER value{};
        QueryPerformanceFrequency(&value);
        return value.QuadPart;
    }();
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    // Whole seconds apart, or the product overflows after some minutes.
    return counter.QuadPart / frequency * kNsPerSecond +
           counter.QuadPart % frequency * kNsPerSecond / frequency;
}

void showProblem(const std::wstring& text) {
    MessageBoxW(theMainWindow, text.c_str(), L"Percussomatic", MB_OK | MB_ICONWARNING);
}

void postStepTick(WindowHandle window) noexcept {
    const HWND target = static_cast<HWND>(window);
    if (target != nullptr && IsWindow(target) != 0) {
        PostMessageW(target, kStepTickMessage, 0, 0);
    }
}

void beginClockThread() noexcept {
    timeBeginPeriod(1);
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL);
}

void endClockThread() noexcept {
    timeEndPeriod(1);
}

// The system's own condition variable: the library's wakes a millisecond late and counts by the
// wall clock, which somebody may set.
void waitForWake(std::unique_lock<std::mutex>& lock) {
    sleepUntilWoken(lock, INFINITE);
}

void waitForWake(std::unique_lock<std::mutex>& lock, std::int64_t milliseconds) {
    sleepUntilWoken(lock, static_cast<DWORD>(milliseconds));
}

void wakeClock() noexcept {
    AcquireSRWLockExclusive(&wakeLock); // not between the release of the clock's lock and the sleep
    ReleaseSRWLockExclusive(&wakeLock);
    WakeAllConditionVariable(&wakeCondition);
}

} // namespace percussomatic
