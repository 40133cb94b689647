// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

namespace percussomatic {

// What each control of the panel does under the mouse. Points are client pixels, scales client
// pixels per layout unit. GUI thread.

enum class Press {
    none,  // no control there
    acted, // the press is used up
    held   // a drag has begun, or the control shows lit until the release: capture the mouse
};

// One rule decides: that of the control whose kind comes first in the table of rules, the topmost
// if several of that kind lie there.
Press pressControl(PixelPoint client, double scale);

// Moves the rotary or slider whose drag has begun. fine: a rotary turns a quarter of the way. False
// if there is no drag.
bool dragControl(PixelPoint client, double scale, bool fine);

// The mouse button is up: ends drags, and what was held goes dark.
void releaseControls();

// One notch of the wheel is 120. True if a rotary lies under the point and the wheel has moved.
bool turnWheel(PixelPoint client, double scale, int delta, bool fine);

} // namespace percussomatic
