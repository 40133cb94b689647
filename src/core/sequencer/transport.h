// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <string>

namespace percussomatic {

// Transport and tempo: start and stop, the tempo, and the choice of clock. GUI thread.

// Advances by one step. Called for every tick of the step clock and every sixth MIDI clock pulse;
// no-op while the rhythm is stopped.
void onStepTick();

// START/STOP. Starting plays step 0 immediately; the first tick plays step 1.
void toggleRunning();

// EDIT. The output is muted in edit mode.
void toggleEditMode();

// Runs the step clock if the rhythm is running on the internal clock, otherwise stops it. Ticks are
// posted to the window.
void clockStart(WindowHandle window);

// Sets the tempo from rotary position t, 0..1, from the next step on.
void setTempoFromRotary(double t);

// Sets a typed tempo, clamped to kMinBpm..kMaxBpm. Moves the rotary to match and ends its drag.
void setTempoBpm(double bpm);

// Applies the tempo rotary to the tempo, or the square of the master rotary to the master gain.
// No-op for any other control.
void applyRotary(int index);

// "SYNC: ..." as the MIDI device window shows it.
std::wstring syncStatusText();
void updateSyncStatus();

} // namespace percussomatic
