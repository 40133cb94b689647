// SPDX-License-Identifier: MIT
#pragma once

namespace percussomatic {

// Control of the panel by Control Change messages. GUI thread.

// Completes a pending learn, or else operates the control that is mapped to the message. Channel
// 0..15, controller and value 0..127.
void handleControlChange(int channel, int controller, int value);

// The control that is mapped to a Control Change; kNoControl if there is none.
int mappedControl(int channel, int controller) noexcept;

// Operates one control. Rotaries and sliders glide to value / 127. The clear switches are on from
// 64 upwards; all others act only on a rising edge, from below 64 to 64 or more. No-op if there is
// no such control.
void applyMidiToControl(int index, int value, bool rising);

} // namespace percussomatic
