#pragma once

#include <windows.h>

namespace percussomatic {

// Brings every room up in its order, runs the message loop and releases what is left. Returns the
// program's exit code: 1 when the window cannot be created, otherwise 0.
int runPercussomatic(HINSTANCE instance);

} // namespace percussomatic
