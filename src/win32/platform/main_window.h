// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// Sets the window that mainWindow() returns; null once it is being destroyed. GUI thread.
void setMainWindow(HWND window) noexcept;

} // namespace percussomatic
