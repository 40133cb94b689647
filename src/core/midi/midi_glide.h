// SPDX-License-Identifier: MIT
#pragma once

namespace percussomatic {

// Smoothing of MIDI control: controllers send only 128 values, and rotaries and sliders glide from
// one to the next. GUI thread.

// Sets the target (0..1) of a rotary or slider and starts the glide timer unless it is running.
// Restarting it with every message would keep it from firing while a controller is being moved.
void glideTo(int index, double target);

// Called by the glide timer every 16 ms: moves every control that has a target, and stops the timer
// when all targets have been reached.
void midiSmoothingTick();

// Discards all targets and stops the timer.
void cancelGlides();

} // namespace percussomatic
