// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// Which controls show their lit picture, and repaints of those that change with the current step.
// GUI thread.

bool controlLit(int index) noexcept;
bool stepLampLit(int control) noexcept; // false for a control that is no step button
bool beatLampLit() noexcept;

// Marks the beat lamp for repainting if it shows something else now.
void updateBeatLamp();

// Mark the set steps of a column or of a line for repainting. The others stay dark.
void redrawStepColumn(std::uint32_t step); // no-op from step 16 on
void redrawSetSteps(int line);

// Marks the column that is lit as the current step. No-op in edit mode, in which every set step is
// lit.
void redrawCurrentColumn(std::uint32_t step);

} // namespace percussomatic
