// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// Runs the program on the calling thread: initialises every module, runs the message loop until the
// main window is destroyed, and cleans up. Returns the exit code: 1 if the window cannot be
// created, otherwise 0.
int runPercussomatic(HINSTANCE instance);

} // namespace percussomatic
