// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// Asks for the tempo in beats per minute, modal over the owner. True with the result, 40..240, if
// the user entered one; false on cancel or close, or if the window cannot be created. GUI thread.
bool runTempoDialog(HWND owner, double bpm, double& result);

} // namespace percussomatic
