// SPDX-License-Identifier: MIT
#pragma once

namespace percussomatic {

// MIDI clock: 24 pulses per quarter note, six per step. While the rhythm follows it, the step clock
// is stopped and every sixth pulse plays a step; the measured tempo is only displayed. Pulses are
// timed when their message is handled. GUI thread.

// Select the clock source. A running rhythm keeps running.
void followInternalClock();
void followMidiClock();

// Discards the measured tempo and the pulses counted towards the next step.
void resetMidiClock() noexcept;

// Realtime messages. Start, Continue and Stop are ignored unless the rhythm follows MIDI clock; the
// tempo is always measured.
void midiClockPulse();
void midiStart();    // plays step 0 immediately
void midiContinue(); // resumes; plays the next step after six pulses
void midiStop();

} // namespace percussomatic
