// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace percussomatic {

// Tells the player that something went wrong, and waits until the message has been closed. GUI
// thread.
void showProblem(const std::wstring& text);

} // namespace percussomatic
