// SPDX-License-Identifier: MIT
#include "win32/platform/main_window.h"

#include "main_window_handle.h"

namespace percussomatic {

namespace {

HWND theMainWindow = nullptr; // GUI thread only

} // namespace

void setMainWindow(HWND window) noexcept {
    theMainWindow = window;
}

WindowHandle mainWindow() noexcept {
    return theMainWindow;
}

} // namespace percussomatic
