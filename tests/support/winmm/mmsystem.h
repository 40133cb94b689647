// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

using MMRESULT = UINT;
using HWAVEOUT = struct WaveOutDevice*;

struct WAVEFORMATEX {
    WORD wFormatTag, nChannels;
    DWORD nSamplesPerSec, nAvgBytesPerSec;
    WORD nBlockAlign, wBitsPerSample, cbSize;
};

struct WAVEHDR {
    char* lpData;
    DWORD dwBufferLength, dwBytesRecorded;
    DWORD_PTR dwUser;
    DWORD dwFlags, dwLoops;
    WAVEHDR* lpNext;
    DWORD_PTR reserved;
};

inline constexpr MMRESULT MMSYSERR_NOERROR = 0, MMSYSERR_ERROR = 1, MMSYSERR_BADDEVICEID = 2;
inline constexpr UINT WAVE_MAPPER = 0xFFFFFFFF;
inline constexpr WORD WAVE_FORMAT_PCM = 1;
inline constexpr DWORD CALLBACK_FUNCTION = 0x30000;
inline constexpr DWORD WHDR_DONE = 1, WHDR_PREPARED = 2, WHDR_INQUEUE = 16;
inline constexpr UINT WOM_OPEN = 0x3BB, WOM_CLOSE = 0x3BC, WOM_DONE = 0x3BD;

MMRESULT waveOutOpen(HWAVEOUT* device, UINT id, const WAVEFORMATEX* format, DWORD_PTR callback,
                     DWORD_PTR instance, DWORD flags);
MMRESULT waveOutPrepareHeader(HWAVEOUT device, WAVEHDR* header, UINT size);
MMRESULT waveOutUnprepareHeader(HWAVEOUT device, WAVEHDR* header, UINT size);
MMRESULT waveOutWrite(HWAVEOUT device, WAVEHDR* header, UINT size);
MMRESULT waveOutReset(HWAVEOUT device);
MMRESULT waveOutClose(HWAVEOUT device);
