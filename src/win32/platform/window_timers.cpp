// SPDX-License-Identifier: MIT
#include "window_timers.h"

#include "main_window_handle.h"

#include <windows.h>

namespace percussomatic {

void startTimer(WindowTimer timer, unsigned periodMs) {
    if (auto* const window = static_cast<HWND>(mainWindow()); window != nullptr) {
        SetTimer(window, static_cast<UINT_PTR>(timer), periodMs, nullptr);
    }
}

void stopTimer(WindowTimer timer) {
    if (auto* const window = static_cast<HWND>(mainWindow()); window != nullptr) {
        KillTimer(window, static_cast<UINT_PTR>(timer));
    }
}

} // namespace percussomatic
