#pragma once

#include "ui/control_layout.h"

#include <cstdint>

namespace percussomatic {

// How the hand holds the panel: the two rotaries, the drag in progress, the power switch. GUI
// thread.

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

    bool powerOffPending = false;
};

PanelState& panelState() noexcept;
void resetPanelState() noexcept;

// The rotary of that row, or null.
RotaryState* rotaryState(int index) noexcept;

} // namespace percussomatic
