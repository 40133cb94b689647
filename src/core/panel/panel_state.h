// SPDX-License-Identifier: MIT
#pragma once

#include "panel/control_table.h"

#include <cstdint>

namespace percussomatic {

// State of the panel's mouse interaction: the two rotaries, the current drag, a pending power-off.
// GUI thread.

struct RotaryState {
    double value = 0.0;          // 0..1
    double dragStartValue = 0.0; // 0..1
    int dragStartY = 0;          // client pixels
    bool dragging = false;
};

struct PanelState {
    RotaryState master{.value = 1.0}; // the volume's gain is the square of this
    RotaryState tempo{.value = 0.4};  // 0..1 is 40..240 BPM
    int rotaryDragIndex = kNoControl;
    std::uint32_t rotaryPaintedMs = 0; // tick count of the drag's last repaint

    int sliderDragIndex = kNoControl;
    int sliderDragStartX = 0;      // layout units
    int sliderDragStartOffset = 0; // layout units

    // The window has no title bar; dragging the panel's background moves it.
    bool windowDragging = false;
    int windowDragAnchorX = 0, windowDragAnchorY = 0; // client pixels

    bool powerOffPending = false;
};

PanelState& panelState() noexcept;
void resetPanelState() noexcept;

// The state of the rotary with that index, or null if the index is not a rotary's.
RotaryState* rotaryState(int index) noexcept;

} // namespace percussomatic
