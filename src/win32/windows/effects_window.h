// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// Makes the effects window on first use, else brings it to the front; it shows what the engine
// has now. Closing hides it. GUI thread.
void showEffectsWindow(HWND owner);

// Shows what the engine has now. No-op while the window does not exist.
void refreshEffectsWindow();

} // namespace percussomatic
