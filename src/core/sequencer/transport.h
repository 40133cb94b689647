// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <string>

namespace percussomatic {

// Transport and tempo: whether the rhythm runs, how fast, and which clock leads. GUI thread.

// One step further: called for every tick of the step clock and every sixth MIDI clock pulse.
// No-op while the rhythm is stopped.
void onStepTick();

// START/STOP. Starting plays step 0 with the press; the first tick plays step 1.
void toggleRunning();

// EDIT. Mutes the output while it is on.
void toggleEditMode();

// Hands the sequencer's state to the step clock: ticking if the rhythm runs on the internal clock,
// otherwise stopped.
void clockStart(WindowHandle window);

// The tempo rotary stands at t (0..1). Takes effect from the next step on.
void setTempoFromRotary(double t);

// A typed tempo, clamped to kMinBpm..kMaxBpm. Turns the rotary to it and ends a drag of the rotary.
void setTempoBpm(double bpm);

// Applies a rotary's value to the tempo, or its square to the master gain. No-op for any other
// control.
void applyRotary(int index);

// "SYNC: ..." as the MIDI device window shows it.
std::wstring syncStatusText();
void updateSyncStatus();

} // namespace percussomatic
