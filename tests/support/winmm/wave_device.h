#pragma once

#include <mmsystem.h>

#include <cstdint>
#include <string>
#include <vector>

// The one wave-out device of a test: takes buffers, returns them when it is told to and watches
// what is done to it. Functions may be called on any thread.
namespace wave_device {

struct Script {
    MMRESULT openResult = MMSYSERR_NOERROR;
    int failingPrepare = 0;       // counted from 1; 0 for none
    bool returnsByItself = false; // on a thread of its own, as soon as it can
    bool clings = false;          // reset returns nothing, close fails, and the buffers are kept
};

struct Block {
    WAVEHDR* header = nullptr;
    std::vector<std::int16_t> samples; // as they were when written
};

// A new device, all counts at zero.
void begin(const Script& script);

// What it does from now on.
void follow(const Script& script);

struct State {
    bool open = false;
    int opens = 0, writes = 0;
    std::vector<Block> written; // not kept while it returns buffers by itself

    // What no program may do to a device: empty when all was well. Written while closed, unprepared
    // or queued, touched while queued, written between reset and close, unprepared while queued,
    // closed with prepared headers, called inside its own callback.
    std::string faults;
};

State state();

// Until so many blocks in all are written; false after ten seconds.
bool waitForWrites(int count);

// Returns the oldest queued buffer, on the calling thread. There must be one.
void returnBuffer();

// Time stands still for whoever waits for an event. awaitedMs() waits until a thread does and says
// how long it means to, 0 if none does within ten seconds; passTime() lets that time pass.
DWORD awaitedMs();
void passTime();

} // namespace wave_device
