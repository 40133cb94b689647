// SPDX-License-Identifier: MIT
// A fake winmm.dll for tests, never installed. Placed next to a copy of the program, it provides
// the wave-out device and, in fake_midi_in.cpp, the MIDI inputs. It is silent but keeps the timing
// of a device: from the first write on, playback advances with the performance counter, and each
// buffer is returned when it has been played. Every block is recorded with its times
// (listen_recording.h), so a test sees each frame no matter how busy the machine is.
//
// Environment variables, all with the prefix PERCUSSOMATIC_TEST_:
//   RECORD         path of the recording; nothing is recorded if unset
//   OPEN_RESULT    the result of waveOutOpen; 0 opens the device
//   FAIL_AFTER_MS  writes later than this many milliseconds after waveOutOpen fail
//   HANGS          a call that never returns: waveOutReset or midiInReset
//
// It does not check how the program handles its buffers; the unit tests of the wave output do.
//
// Threads: any. A thread of its own returns the buffers.

#define _WINMM_ // NOLINT(bugprone-reserved-identifier): declares the functions without dllimport

#include "fake_winmm.h"
#include "listen_recording.h"

#include <windows.h>

#include <mmsystem.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <deque>
#include <fstream>

namespace {

using namespace fake_winmm;

using Callback = void(CALLBACK*)(HWAVEOUT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);

struct QueuedBuffer {
    WAVEHDR* header = nullptr;
    std::int64_t endsNs = 0;
};

struct Device {
    SRWLOCK lock = SRWLOCK_INIT;
    CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;
    // All guarded by lock.
    bool open = false;
    std::int64_t frameRateHz = 0;
    Callback callback = nullptr;
    DWORD_PTR instance = 0;
    std::deque<QueuedBuffer> queue;
    std::int64_t openedNs = 0;
    std::int64_t endsNs = 0; // end of the last buffer; 0 before the first
    std::ofstream recording;
    HANDLE thread = nullptr;
};

Device theDevice;
const auto kHandle = std::bit_cast<HWAVEOUT>(&theDevice);

// Flushes after each entry, so that the recording survives when the program is killed.
void recordLocked(const listen::BlockHeader& entry, const char* frames) {
    theDevice.recording.write(reinterpret_cast<const char*>(&entry), sizeof(entry));
    theDevice.recording.write(frames, entry.frames * std::int64_t{listen::kFrameBytes});
    theDevice.recording.flush();
}

// Releases the lock while the program's callback runs.
void returnOldestLocked() {
    WAVEHDR* header = theDevice.queue.front().header;
    theDevice.queue.pop_front();
    header->dwFlags = (header->dwFlags & ~DWORD{WHDR_INQUEUE}) | WHDR_DONE;
    const Callback callback = theDevice.callback;
    const DWORD_PTR instance = theDevice.instance;
    ReleaseSRWLockExclusive(&theDevice.lock);
    callback(kHandle, WOM_DONE, instance, std::bit_cast<DWORD_PTR>(header), 0);
    AcquireSRWLockExclusive(&theDevice.lock);
}

void waitForChangeLocked(DWORD milliseconds) {
    SleepConditionVariableSRW(&theDevice.changed, &theDevice.lock, milliseconds, 0);
}

DWORD WINAPI returnPlayed(void* /*unused*/) {
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    const Lock lock(theDevice.lock);
    while (theDevice.open) {
        if (theDevice.queue.empty()) {
            waitForChangeLocked(INFINITE);
            continue;
        }
        const std::int64_t remainingNs = theDevice.queue.front().endsNs - counterNs();
        if (remainingNs > 0) {
            waitForChangeLocked(static_cast<DWORD>((remainingNs + kNsPerMs - 1) / kNsPerMs));
        } else {
            returnOldestLocked();
        }
    }
    return 0;
}

} // namespace

std::int64_t fake_winmm::counterNs() {
    LARGE_INTEGER ticks, ticksPerSecond;
    QueryPerformanceCounter(&ticks);
    QueryPerformanceFrequency(&ticksPerSecond);
    const std::int64_t second = ticksPerSecond.QuadPart;
    return ticks.QuadPart / second * kNsPerSecond + ticks.QuadPart % second * kNsPerSecond / second;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE /*library*/, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        startMidiSender();
    }
    return TRUE;
}

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): names differ from the SDK's

MMRESULT WINAPI waveOutOpen(LPHWAVEOUT device, UINT /*id*/, LPCWAVEFORMATEX format,
                            DWORD_PTR callback, DWORD_PTR instance, DWORD /*flags*/) {
    {
        const Lock lock(theDevice.lock);
        if (const int result = std::atoi(setting("OPEN_RESULT").c_str()); result != 0) {
            return static_cast<MMRESULT>(result);
        }
        theDevice.open = true;
        theDevice.frameRateHz = format->nSamplesPerSec;
        theDevice.callback = std::bit_cast<Callback>(callback);
        theDevice.instance = instance;
        theDevice.endsNs = 0;
        theDevice.openedNs = counterNs();
        if (!theDevice.recording.is_open()) {
            theDevice.recording.open(setting("RECORD"), std::ios::binary);
        }
        recordLocked({.writtenNs = theDevice.openedNs}, nullptr);
        theDevice.thread = CreateThread(nullptr, 0, returnPlayed, nullptr, 0, nullptr);
    }
    *device = kHandle;
    std::bit_cast<Callback>(callback)(kHandle, WOM_OPEN, instance, 0, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutPrepareHeader(HWAVEOUT /*device*/, LPWAVEHDR header, UINT /*size*/) {
    header->dwFlags |= WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutUnprepareHeader(HWAVEOUT /*device*/, LPWAVEHDR header, UINT /*size*/) {
    header->dwFlags &= ~DWORD{WHDR_PREPARED};
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutWrite(HWAVEOUT /*device*/, LPWAVEHDR header, UINT /*size*/) {
    const Lock lock(theDevice.lock);
    const std::int64_t nowNs = counterNs();
    const int failAfterMs = std::atoi(setting("FAIL_AFTER_MS").c_str());
    if (failAfterMs != 0 && nowNs - theDevice.openedNs > failAfterMs * kNsPerMs) {
        return MMSYSERR_NODRIVER;
    }
    // After an underrun the block starts now, which leaves a gap before it.
    const listen::BlockHeader entry{.writtenNs = nowNs,
                                    .startsNs = std::max(nowNs, theDevice.endsNs),
                                    .frames =
                                        header->dwBufferLength / std::int64_t{listen::kFrameBytes}};
    recordLocked(entry, header->lpData);
    theDevice.endsNs = entry.startsNs + entry.frames * kNsPerSecond / theDevice.frameRateHz;
    header->dwFlags = (header->dwFlags & ~DWORD{WHDR_DONE}) | WHDR_INQUEUE;
    theDevice.queue.push_back({header, theDevice.endsNs});
    WakeAllConditionVariable(&theDevice.changed);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutReset(HWAVEOUT /*device*/) {
    hangIfRequested("waveOutReset");
    const Lock lock(theDevice.lock);
    while (!theDevice.queue.empty()) {
        returnOldestLocked();
    }
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutClose(HWAVEOUT /*device*/) {
    {
        const Lock lock(theDevice.lock);
        theDevice.open = false;
        WakeAllConditionVariable(&theDevice.changed);
    }
    WaitForSingleObject(theDevice.thread, INFINITE);
    CloseHandle(theDevice.thread);
    theDevice.callback(kHandle, WOM_CLOSE, theDevice.instance, 0, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI timeBeginPeriod(UINT /*milliseconds*/) {
    return TIMERR_NOERROR;
}

MMRESULT WINAPI timeEndPeriod(UINT /*milliseconds*/) {
    return TIMERR_NOERROR;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
