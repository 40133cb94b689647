// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// Which controls show their lit picture, and the repaints of those that depend on the current step.
// GUI thread.

bool controlLit(int index) noexcept;
bool stepLampLit(int control) noexcept; // false unless it is a lit step button
bool beatLampLit() noexcept;

// Marks the beat lamp for repainting if its state differs from what was last painted.
void updateBeatLamp();

// Mark the set steps of a column or of a line for repainting. Unset steps are always dark.
void redrawStepColumn(std::uint32_t step); // no-op from step 16 on
void redrawSetSteps(int line);

// Marks the set steps of the current column. No-op in edit mode, where every set step is lit.
void redrawCurrentColumn(std::uint32_t step);

} // namespace percussomatic
