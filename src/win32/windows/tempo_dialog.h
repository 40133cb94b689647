#pragma once

#include <windows.h>

namespace percussomatic {

// Asks for the tempo in beats per minute, modal over the owner. True with the result, 40..240, when
// the player accepted one; false on cancel, close, or when the window cannot be made. GUI thread.
bool runTempoDialog(HWND owner, double bpm, double& result);

} // namespace percussomatic
