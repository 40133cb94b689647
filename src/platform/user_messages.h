// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace percussomatic {

// Reports a problem to the player and waits until the message has been closed. GUI thread.
void showProblem(const std::wstring& text);

} // namespace percussomatic
