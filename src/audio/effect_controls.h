#pragma once

#include "audio/sound_engine.h"

namespace percussomatic {

// What the trackbars of the effects window mean to the engine. Each stands at 0..100; they are
// named by the ids of their controls. GUI thread.

inline constexpr int kSendBarId = 2000; // the instruments' sends, by sample index
inline constexpr int kSendBars = 12;

// Return, room size, damping, width, pre-delay and the three extras.
inline constexpr int kParameterBarId = 2110;
inline constexpr int kParameterBars = 8;

inline constexpr int kBarEnd = 100;

// Where a trackbar stands for the engine's present setting; 0 for any other id.
int barPosition(const SoundEngine& engine, int id);

// Sets what a trackbar at that position means; nothing for any other id.
void moveBar(SoundEngine& engine, int id, int position);

} // namespace percussomatic
