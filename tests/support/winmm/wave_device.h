// SPDX-License-Identifier: MIT
// A fake wave-out device: completes buffers when told to and records violations of winmm's rules.
// Any thread.
#pragma once

#include <mmsystem.h>

#include <cstdint>
#include <string>
#include <vector>

namespace wave_device {

constexpr std::int64_t kBlockNs = 10'666'667; // 512 frames at 48 kHz

struct Behaviour {
    MMRESULT openResult = MMSYSERR_NOERROR;
    int failingPrepare = 0;          // which call fails, counted from 1; 0 for none
    int failingWrite = 0;            // likewise
    std::int64_t blockNs = kBlockNs; // how much counterNs() advances when a buffer is completed
    bool autoComplete = false;       // completes buffers at once, on a thread of its own
    bool keepsBuffers = false;       // reset completes nothing, unprepare and close fail
};

struct Block {
    WAVEHDR* header = nullptr;
    std::vector<std::int16_t> samples; // copied when written
};

struct State {
    bool open = false;
    int opens = 0, writes = 0;
    std::vector<Block> written; // empty with autoComplete
    std::string violations;     // one per line; empty if there are none
};

void create(const Behaviour& behaviour); // a new device; its State starts from scratch
void setBehaviour(const Behaviour& behaviour);
State state();

// Waits until `count` blocks have been written in all; false after ten seconds.
bool waitForWrites(int count);

// Completes the oldest queued buffer on the calling thread. There must be one.
void completeOldest();

// Time stands still for threads that wait for an event. pendingTimeoutMs() blocks until a thread
// waits and returns its timeout, or 0 after ten seconds. expireTimeout() lets that wait time out.
DWORD pendingTimeoutMs();
void expireTimeout();

} // namespace wave_device
