#pragma once

#include "audio/sound_engine.h"
#include "pattern/instruments.h"

namespace percussomatic {

// What the trackbars of the effects window mean to the engine. Each has a position of 0..100 and is
// identified by its control id. GUI thread.

inline constexpr int kSendBarId = 2000; // the first of the instruments' sends, by sample index
inline constexpr int kSendBars = static_cast<int>(kInstrumentCount);

// Return, room size, damping, width, pre-delay and the three extras, from this id on.
inline constexpr int kParameterBarId = 2110;
inline constexpr int kParameterBars = 8;

inline constexpr int kMaxBarPosition = 100;

// The position that shows the engine's current setting; 0 for any other id.
int barPosition(const SoundEngine& engine, int id);

// Applies a trackbar's position to the engine. No-op for any other id.
void moveBar(SoundEngine& engine, int id, int position);

} // namespace percussomatic
