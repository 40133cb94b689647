// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"

#include <cstdint>
#include <string>

namespace percussomatic {

// Transport and tempo: start and stop, the tempo, and the choice of clock. GUI thread.

// Advances by one step, for a tick of the step clock or every sixth MIDI clock pulse. The step
// sounds at the frame that belongs to dueNs. No-op while the rhythm is stopped.
void onStepTick(std::int64_t dueNs);

// A posted tick of the step clock. No-op while the rhythm follows MIDI clock: the tick was posted
// before the clock source was changed.
void onClockTick();

// Marks the rhythm as running or stopped. While it runs, the computer does not go to sleep.
void setRunning(bool running);

// START/STOP. Starting plays step 0, which is due now; the first tick plays step 1.
void toggleRunning();

// EDIT. The output is muted in edit mode.
void toggleEditMode();

// Silences the sound engine until the program ends. EDIT does not unmute it any more.
void switchSoundOff();

// Runs the step clock if the rhythm is running on the internal clock, otherwise stops it. Ticks are
// posted to the window, the first one an interval after startNs, or after now.
void startClockAt(WindowHandle window, std::int64_t startNs);
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
