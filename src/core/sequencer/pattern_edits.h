// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// Edits made by the step buttons, clear switches and length switches, with the repaints they need.
// GUI thread.

void toggleStep(int line, int step); // line 0..5, step 0..15; its button shows lit while held
void clearAll();
void clearLine(int line, int clearSwitch);    // clearSwitch: the control that is held
void setSequenceLength(std::uint32_t length); // steps, at least 1

// Marks all length switches for repainting.
void redrawLengthSwitches();

} // namespace percussomatic
