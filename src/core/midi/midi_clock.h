#pragma once

namespace percussomatic {

// Following a MIDI clock: 24 pulses per quarter note, six per step. While the rhythm follows it the
// step clock stands still and every sixth pulse is a step; the measured tempo is for the eye only.
// Times are taken when the message is handled. GUI thread.

// Who leads. A running rhythm goes on running.
void followInternalClock();
void followMidiClock();

// Forgets the measured tempo and the pulses of a begun step.
void resetMidiClock() noexcept;

// The realtime messages. Start, Continue and Stop count only while the MIDI clock leads; pulses are
// measured always.
void midiClockPulse();
void midiStart();    // from step 0, which sounds at once
void midiContinue(); // from where it was; the next step sounds after six pulses
void midiStop();

} // namespace percussomatic
