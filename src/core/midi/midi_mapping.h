#pragma once

namespace percussomatic {

// What a mapped Control Change does to the panel. GUI thread.

// Completes a learn that waits for it, or else moves the control that is mapped to it. Channel
// 0..15, controller and value 0..127.
void handleControlChange(int channel, int controller, int value);

// Rotaries and sliders begin to glide to value / 127. Switches count as pressed from 64 on; most of
// them act only when the value has risen to there. Nothing for an index that is no control.
void applyMidiToControl(int index, int value, bool rising);

} // namespace percussomatic
