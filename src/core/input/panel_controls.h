// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

namespace percussomatic {

// How the controls of the panel respond to the mouse. Points are client pixels, scales client
// pixels per layout unit. GUI thread.

enum class Press {
    none, // no control at that point
    handled,
    held // a drag has begun, or the control is lit until the release: capture the mouse
};

// Where controls overlap, kPressRules decides which kind takes precedence; of several controls of
// that kind, the topmost is pressed.
Press pressControl(PixelPoint client, double scale);

// Moves the rotary or slider that is being dragged. fine: rotaries turn at a quarter of the speed.
// False if no drag is in progress.
bool dragControl(PixelPoint client, double scale, bool fine);

// Left button up: ends the drag and unlights held controls.
void releaseControls();

// delta: 120 per notch of the wheel. True if there is a rotary at that point and delta is not 0.
bool turnWheel(PixelPoint client, double scale, int delta, bool fine);

} // namespace percussomatic
