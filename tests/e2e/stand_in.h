#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <string>

// What the two halves of the stand-in for winmm.dll share: winmm_stand_in.cpp is the wave-out
// device, midi_stand_in.cpp the MIDI inputs.
namespace stand_in {

constexpr std::int64_t kNsPerSecond = 1'000'000'000, kNsPerMs = 1'000'000, kNsPerUs = 1'000;

std::int64_t counterNs(); // the performance counter

// The environment variable PERCUSSOMATIC_TEST_name; empty without it.
inline std::string setting(const char* name) {
    const char* value = std::getenv((std::string("PERCUSSOMATIC_TEST_") + name).c_str());
    return value != nullptr ? value : "";
}

// The call that HANGS names never returns: a driver that has stopped answering.
inline void hangIn(const char* call) {
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

// Starts the thread that plays the script, when there is one. Called once, as the program loads.
void startMidiPlayer();

} // namespace stand_in
