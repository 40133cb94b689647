// winmm.dll for tests, never installed: put beside a copy of the program, it is the wave-out
// device and, in midi_stand_in.cpp, the MIDI inputs. It plays nothing, but takes time as a device
// does: from the first write on it advances with the performance counter and returns each buffer
// when it has been played. Every block is written down with its times (listen_recording.h), so a
// test sees each frame, however busy the machine is.
//
// Environment variables, all with the prefix PERCUSSOMATIC_TEST_:
//   RECORD         path of the recording; none is made without it
//   OPEN_RESULT    what waveOutOpen returns, 0 to open
//   FAIL_PREPARE   which waveOutPrepareHeader fails, counted from 1
//   STOP_AFTER_MS  the first opened device returns no buffer that is played later than so many
//                  milliseconds after its first write
//
// Threads: any. One of its own returns the buffers.

#define _WINMM_ // NOLINT(bugprone-reserved-identifier): declares what follows without dllimport

#include "listen_recording.h"
#include "midi_stand_in.h"

#include <windows.h>

#include <mmsystem.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <limits>
#include <string>

namespace {

using namespace stand_in;

using Callback = void(CALLBACK*)(HWAVEOUT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

struct QueuedBuffer {
    WAVEHDR* header = nullptr;
    std::int64_t endsNs = 0;
};

struct Device {
    SRWLOCK lock = SRWLOCK_INIT;
    CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;
    // All guarded by lock.
    bool open = false;
    int opens = 0, prepares = 0;
    std::uint32_t frameRateHz = 0;
    Callback callback = nullptr;
    DWORD_PTR instance = 0;
    std::deque<QueuedBuffer> queue;
    std::int64_t endsNs = 0;      // of the last buffer; 0 before the first
    std::int64_t hungNs = kNever; // buffers that end later do not return
    HANDLE recording = INVALID_HANDLE_VALUE;
    HANDLE thread = nullptr;
};

Device theDevice;
const auto kHandle = std::bit_cast<HWAVEOUT>(&theDevice);

int numberSetting(const wchar_t* name) {
    return std::wcstol(setting(name).c_str(), nullptr, 10);
}

// One call of the system per entry: what is written stays when the program is killed.
void recordLocked(const listen::BlockHead& head, const void* frames) {
    if (theDevice.recording == INVALID_HANDLE_VALUE) {
        return;
    }
    std::string entry(listen::kBlockHeadBytes + head.frames * listen::kFrameBytes, '\0');
    std::memcpy(entry.data(), &head.handedNs, sizeof(head.handedNs));
    std::memcpy(entry.data() + 8, &head.startsNs, sizeof(head.startsNs));
    std::memcpy(entry.data() + 16, &head.frames, sizeof(head.frames));
    if (head.frames > 0) {
        std::memcpy(entry.data() + listen::kBlockHeadBytes, frames,
                    head.frames * listen::kFrameBytes);
    }
    DWORD written = 0;
    WriteFile(theDevice.recording, entry.data(), static_cast<DWORD>(entry.size()), &written,
              nullptr);
}

void openRecordingLocked() {
    const std::wstring path = setting(L"RECORD");
    if (!path.empty() && theDevice.recording == INVALID_HANDLE_VALUE) {
        theDevice.recording = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
}

// Lets go of the lock while the program's callback runs.
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

DWORD WINAPI returnPlayed(void* /*nothing*/) {
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    const Lock lock(theDevice.lock);
    while (theDevice.open) {
        if (theDevice.queue.empty() || theDevice.queue.front().endsNs > theDevice.hungNs) {
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

std::int64_t stand_in::counterNs() {
    LARGE_INTEGER ticks, ticksPerSecond;
    QueryPerformanceCounter(&ticks);
    QueryPerformanceFrequency(&ticksPerSecond);
    const std::int64_t second = ticksPerSecond.QuadPart;
    return ticks.QuadPart / second * kNsPerSecond + ticks.QuadPart % second * kNsPerSecond / second;
}

std::wstring stand_in::setting(const wchar_t* name) {
    std::array<wchar_t, MAX_PATH> value{};
    const std::wstring variable = std::wstring(L"PERCUSSOMATIC_TEST_") + name;
    GetEnvironmentVariableW(variable.c_str(), value.data(), static_cast<DWORD>(value.size()));
    return value.data();
}

extern "C" BOOL WINAPI DllMain(HINSTANCE /*library*/, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        startMidiPlayer();
    }
    return TRUE;
}

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): our own names

MMRESULT WINAPI waveOutOpen(LPHWAVEOUT device, UINT /*id*/, LPCWAVEFORMATEX format,
                            DWORD_PTR callback, DWORD_PTR instance, DWORD /*flags*/) {
    {
        const Lock lock(theDevice.lock);
        if (const int result = numberSetting(L"OPEN_RESULT"); result != 0) {
            return static_cast<MMRESULT>(result);
        }
        if (theDevice.open) {
            return MMSYSERR_ALLOCATED;
        }
        if (format->nBlockAlign != listen::kFrameBytes || format->wBitsPerSample != 16) {
            return WAVERR_BADFORMAT;
        }
        theDevice.open = true;
        ++theDevice.opens;
        theDevice.frameRateHz = format->nSamplesPerSec;
        theDevice.callback = std::bit_cast<Callback>(callback);
        theDevice.instance = instance;
        theDevice.endsNs = 0;
        theDevice.hungNs = kNever;
        openRecordingLocked();
        recordLocked({.handedNs = counterNs()}, nullptr);
        theDevice.thread = CreateThread(nullptr, 0, returnPlayed, nullptr, 0, nullptr);
    }
    *device = kHandle;
    std::bit_cast<Callback>(callback)(kHandle, WOM_OPEN, instance, 0, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutPrepareHeader(HWAVEOUT /*device*/, LPWAVEHDR header, UINT /*size*/) {
    const Lock lock(theDevice.lock);
    if (++theDevice.prepares == numberSetting(L"FAIL_PREPARE")) {
        return MMSYSERR_NOMEM;
    }
    header->dwFlags |= WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutUnprepareHeader(HWAVEOUT /*device*/, LPWAVEHDR header, UINT /*size*/) {
    const Lock lock(theDevice.lock);
    if ((header->dwFlags & WHDR_INQUEUE) != 0) {
        return WAVERR_STILLPLAYING;
    }
    header->dwFlags &= ~DWORD{WHDR_PREPARED};
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutWrite(HWAVEOUT /*device*/, LPWAVEHDR header, UINT /*size*/) {
    const Lock lock(theDevice.lock);
    if (!theDevice.open || (header->dwFlags & WHDR_PREPARED) == 0) {
        return theDevice.open ? MMRESULT{WAVERR_UNPREPARED} : MMRESULT{MMSYSERR_INVALHANDLE};
    }
    if ((header->dwFlags & WHDR_INQUEUE) != 0) {
        return WAVERR_STILLPLAYING;
    }
    const std::int64_t nowNs = counterNs();
    if (theDevice.endsNs == 0 && theDevice.opens == 1) {
        if (const int stopAfterMs = numberSetting(L"STOP_AFTER_MS"); stopAfterMs != 0) {
            theDevice.hungNs = nowNs + stopAfterMs * kNsPerMs;
        }
    }
    // When the queue has run dry the block begins now, and a gap is left behind it.
    listen::BlockHead head;
    head.handedNs = nowNs;
    head.startsNs = std::max(nowNs, theDevice.endsNs);
    head.frames = header->dwBufferLength / listen::kFrameBytes;
    recordLocked(head, header->lpData);
    theDevice.endsNs = head.startsNs + head.frames * kNsPerSecond / theDevice.frameRateHz;
    header->dwFlags = (header->dwFlags & ~DWORD{WHDR_DONE}) | WHDR_INQUEUE;
    theDevice.queue.push_back({header, theDevice.endsNs});
    WakeAllConditionVariable(&theDevice.changed);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutReset(HWAVEOUT /*device*/) {
    const Lock lock(theDevice.lock);
    while (!theDevice.queue.empty()) {
        returnOldestLocked();
    }
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI waveOutClose(HWAVEOUT /*device*/) {
    HANDLE thread = nullptr;
    {
        const Lock lock(theDevice.lock);
        if (!theDevice.open || !theDevice.queue.empty()) {
            return theDevice.open ? MMRESULT{WAVERR_STILLPLAYING} : MMRESULT{MMSYSERR_INVALHANDLE};
        }
        theDevice.open = false;
        thread = theDevice.thread;
        WakeAllConditionVariable(&theDevice.changed);
    }
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
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
