#pragma once

#include <windows.h>

namespace percussomatic {

// What the instrument is, what it has at its disposal right now, and its gestures. Made on first
// use, then hidden and shown. GUI thread.
void showAboutWindow(HWND owner);
void destroyAboutWindow();

} // namespace percussomatic
