// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

namespace percussomatic {

// MIDI learn: LEARN arms it, a click on the panel selects a control, and the next Control Change is
// bound to that control. GUI thread.

void armMidiLearn();

// Handles a click on the panel: selects the topmost rotary, slider or button at that point, or asks
// again if there is none. False if learn is not armed. The point is in client pixels, the scale in
// client pixels per layout unit.
bool learnClick(PixelPoint client, double scale);

// Binds the selected control. False if learn is not waiting for a Control Change. Channel 0..15,
// controller and value 0..127.
bool learnControlChange(int channel, int controller, int value);

// Deletes all mappings of the device, also from the settings file, and cancels learn.
void clearMidiMappings();

} // namespace percussomatic
