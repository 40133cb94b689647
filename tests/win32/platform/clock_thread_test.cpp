// SPDX-License-Identifier: MIT
// What the step clock's thread and the transport ask of the system. Fakes take the place of the
// imported functions.
#include "clock_thread.h"
#include "system_sleep.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <mmsystem.h>

#include <bit>
#include <string>
#include <vector>

namespace {

std::vector<std::string>* calls = nullptr; // null: not recording
bool preciseTimers = true;
bool throttling = true; // whether the system knows SetProcessInformation

void record(const std::string& call) {
    if (calls != nullptr) {
        calls->push_back(call);
    }
}

BOOL WINAPI fakeSetProcessInformation(HANDLE, int kind, const ULONG* values, DWORD size) {
    record("power " + std::to_string(kind) + ": " + std::to_string(values[0]) + ' ' +
           std::to_string(values[1]) + ' ' + std::to_string(values[2]) + ", " +
           std::to_string(size));
    return FALSE; // ignored
}

// The C runtime asks for other functions when it starts, and does without them.
FARPROC WINAPI fakeGetProcAddress(HMODULE, LPCSTR /*name*/) {
    return throttling && calls != nullptr ? std::bit_cast<FARPROC>(&fakeSetProcessInformation)
                                          : nullptr;
}

HANDLE WINAPI fakeCreateTimer(LPSECURITY_ATTRIBUTES, LPCWSTR, DWORD flags, DWORD /*access*/) {
    record("timer " + std::to_string(flags));
    return preciseTimers ? CreateEventW(nullptr, TRUE, TRUE, nullptr) : nullptr;
}

BOOL WINAPI fakeSetTimer(HANDLE, const LARGE_INTEGER* due, LONG, PTIMERAPCROUTINE, LPVOID, BOOL) {
    record("due " + std::to_string(due->QuadPart));
    return TRUE;
}

EXECUTION_STATE WINAPI fakeExecutionState(EXECUTION_STATE state) {
    record("state " + std::to_string(state));
    return 0;
}

MMRESULT WINAPI fakeBeginPeriod(UINT milliseconds) {
    record("period " + std::to_string(milliseconds));
    return TIMERR_NOERROR;
}

} // namespace

extern "C" { // NOLINTBEGIN(bugprone-reserved-identifier): how the compiler names imports
auto* __imp_GetProcAddress = &fakeGetProcAddress;
auto* __imp_CreateWaitableTimerExW = &fakeCreateTimer;
auto* __imp_SetWaitableTimer = &fakeSetTimer;
auto* __imp_SetThreadExecutionState = &fakeExecutionState;
auto* __imp_timeBeginPeriod = &fakeBeginPeriod;
} // NOLINTEND(bugprone-reserved-identifier)

namespace percussomatic {
namespace {

using Calls = std::vector<std::string>;

TEST(ClockThread, KeepsItsTimerResolutionAndWaitsInUnitsOf100Nanoseconds) {
    std::mutex mutex;
    for (const bool modern : {true, false}) {
        Calls made;
        calls = &made;
        preciseTimers = throttling = modern;
        std::unique_lock lock(mutex);
        beginClockThread();
        for (const std::int64_t ns : {1, 2'500'000, 2'500'001}) {
            waitForWake(lock, ns);
        }
        wakeClock();
        waitForWake(lock); // returns, because the wake is kept
        EXPECT_TRUE(lock.owns_lock());
        endClockThread();
        calls = nullptr;
        EXPECT_EQ(made, modern ? (Calls{"power 4: 1 4 0, 12", "period 1", "timer 2", "due -1",
                                        "due -25000", "due -25001"})
                               : (Calls{"period 1", "timer 2"}));
    }
}

TEST(SystemSleep, IsPreventedWhileTheRhythmRuns) {
    Calls made;
    calls = &made;
    keepSystemAwake(true);
    keepSystemAwake(false);
    calls = nullptr;
    EXPECT_EQ(made, (Calls{"state " + std::to_string(0x80000001),
                           "state " + std::to_string(0x80000000)}));
}

} // namespace
} // namespace percussomatic
