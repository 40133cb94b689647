// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// What the step buttons, the clear switches and the length switches do, with their repaints. GUI
// thread.

void toggleStep(int line, int step); // line 0..5, step 0..15; its button shows lit while held
void clearAll();
void clearLine(int line, int clearSwitch);    // clearSwitch: the control that is held
void setSequenceLength(std::uint32_t length); // steps, at least 1

// Marks all length switches for repainting.
void redrawLengthSwitches();

} // namespace percussomatic
