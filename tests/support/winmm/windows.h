#pragma once

// The little of the Windows headers that the wave output needs, for tests on other systems. Put
// this folder first among the include folders; wave_device.cpp implements it.

#include <cstdint>

#define CALLBACK

using BOOL = int;
using WORD = std::uint16_t;
using UINT = std::uint32_t;
using DWORD = std::uint32_t;
using DWORD_PTR = std::uintptr_t;
using LPSTR = char*;
using HANDLE = void*;

inline constexpr BOOL FALSE = 0, TRUE = 1;
inline constexpr DWORD WAIT_OBJECT_0 = 0, WAIT_TIMEOUT = 258;
inline constexpr int THREAD_PRIORITY_TIME_CRITICAL = 15;

HANDLE CreateEventW(void* security, BOOL manualReset, BOOL signalled, const wchar_t* name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
DWORD WaitForSingleObject(HANDLE event, DWORD milliseconds); // see passTime() of wave_device.h
BOOL CloseHandle(HANDLE event);
HANDLE GetCurrentThread();
BOOL SetThreadPriority(HANDLE thread, int priority);
