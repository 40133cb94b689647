// SPDX-License-Identifier: MIT
// The subset of the Windows headers that wave_out uses, for native tests. This folder must come
// first in the include path. Implemented by wave_device.cpp.
#pragma once

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
DWORD WaitForSingleObject(HANDLE event, DWORD milliseconds); // see expireTimeout()
inline constexpr auto CloseHandle = [](HANDLE /*event*/) { return TRUE; };
inline constexpr auto GetCurrentThread = [] { return HANDLE{}; };
inline constexpr auto SetThreadPriority = [](HANDLE /*thread*/, int /*priority*/) { return TRUE; };
