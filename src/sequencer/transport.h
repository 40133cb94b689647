#pragma once

#include "sequencer/system.h"

#include <string>

namespace percussomatic {

// Transport and tempo: whether the step clock runs, how fast, and who leads. GUI thread.

inline constexpr double kLeastBpm = 40.0, kMostBpm = 240.0;

// The tempo rotary's way: t in 0..1 is 40..240 BPM.
double rotaryToBpm(double t) noexcept;
double bpmToRotary(double bpm) noexcept; // clamped to 0..1

// Hands the sequencer's state to the step clock: ticking when it runs and leads itself, else
// stopped.
void clockStart(WindowHandle window);

// The tempo rotary stands at t (0..1). Counts from the next step on.
void setTempoFromRotary(double t);

// A typed tempo, clamped to 40..240 BPM; turns the rotary along and ends a drag of it.
void setTempoBpm(double bpm);

// "SYNC: ..." as the MIDI device window shows it.
std::wstring syncStatusText();
void updateSyncStatus();

} // namespace percussomatic
