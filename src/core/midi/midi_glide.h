#pragma once

namespace percussomatic {

// Controllers send 128 coarse values; rotaries and sliders glide from one to the next. GUI thread.

// Sends a rotary or slider on its way to `target` (0..1) and starts the glide's timer if it stands
// still. A running one is left alone: begun anew at each message it would never fire while the hand
// moves.
void glideTo(int index, double target);

// The glide's timer, every 16 ms: moves everything on its way, and stops the timer when all has
// landed.
void midiSmoothingTick();

// Leaves everything where it stands: a card has just placed it.
void endGlides();

} // namespace percussomatic
