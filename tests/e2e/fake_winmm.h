// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <string>

// Shared by the two parts of the fake winmm.dll: fake_winmm.cpp implements the wave-out device,
// fake_midi_in.cpp the MIDI inputs.
namespace fake_winmm {

constexpr std::int64_t kNsPerSecond = 1'000'000'000, kNsPerMs = 1'000'000, kNsPerUs = 1'000;

std::int64_t counterNs(); // performance counter

// The value of the environment variable PERCUSSOMATIC_TEST_<name>; empty if it is not set.
inline std::string setting(const char* name) {
    const char* value = std::getenv((std::string("PERCUSSOMATIC_TEST_") + name).c_str());
    return value != nullptr ? value : "";
}

// Never returns if the variable HANGS names this call: simulates an unresponsive driver.
inline void hangIfRequested(const char* call) {
    if (setting("HANGS") == call) {
        Sleep(INFINITE);
    }
}

class Lock {
public:
    explicit Lock(SRWLOCK& lock) : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    ~Lock() { ReleaseSRWLockExclusive(&lock_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    SRWLOCK& lock_;
};

// Starts the thread that plays MIDI_SCRIPT, if that variable is set. Called once, when the DLL
// loads.
void startMidiSender();

} // namespace fake_winmm
