// SPDX-License-Identifier: MIT
#pragma once

#include "panel/control_table.h"

#include <cstdint>

namespace percussomatic {

// What the mouse has hold of: the two rotaries, the drag in progress, the power switch. GUI thread.

struct RotaryState {
    double value = 0.0;          // 0..1
    double dragStartValue = 0.0; // value when the drag began
    int dragStartY = 0;          // client pixels
    bool dragging = false;
};

struct PanelState {
    RotaryState master{.value = 1.0}; // the gain is its square
    RotaryState tempo{.value = 0.4};  // 40..240 BPM
    int rotaryDragIndex = kNoControl;
    std::uint32_t rotaryPaintedMs = 0; // tick count of the drag's last repaint

    int sliderDragIndex = kNoControl;
    int sliderDragStartX = 0;      // layout units
    int sliderDragStartOffset = 0; // layout units

    // A drag of any bare part of the panel moves the window, which has no caption.
    bool windowDragging = false;
    int windowDragAnchorX = 0, windowDragAnchorY = 0; // client pixels

    bool powerOffPending = false;
};

PanelState& panelState() noexcept;
void resetPanelState() noexcept;

// The rotary of that row, or null for any other row and for kNoControl.
RotaryState* rotaryState(int index) noexcept;

} // namespace percussomatic
