// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// The INFO window: version, state of the devices, files, and a summary of mouse and keys. Created
// on first use; closing hides it. GUI thread.
void showAboutWindow(HWND owner);
void destroyAboutWindow();

} // namespace percussomatic
