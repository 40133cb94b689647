// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// Opens the effects window, which is created on first use, or brings it to the front. Closing hides
// it. GUI thread.
void showEffectsWindow(HWND owner);

// Updates the controls from the engine's settings. No-op while the window does not exist.
void refreshEffectsWindow();

} // namespace percussomatic
