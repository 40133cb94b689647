// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

namespace percussomatic {

// Learn: LEARN arms it, a click on the panel chooses the control, and the next Control Change is
// bound to it. GUI thread.

void armMidiLearn();

// A click while learn is armed: chooses the topmost rotary, slider or button there, or asks again.
// True: the click is used up. Client pixels, and client pixels per layout unit.
bool learnClick(PixelPoint client, double scale);

// Binds the chosen control; false when learn is not waiting for that.
bool learnControlChange(int channel, int controller, int value);

// Forgets all mappings, in memory and in the settings file, and ends a learn.
void clearMidiMappings();

} // namespace percussomatic
