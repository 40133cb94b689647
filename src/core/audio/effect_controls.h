// SPDX-License-Identifier: MIT
#pragma once

#include "audio/sound_engine.h"
#include "pattern/instruments.h"

namespace percussomatic {

// Maps the trackbars of the effects window to the engine's settings. Each trackbar has a position
// of 0..100 and is identified by its control id. GUI thread.

inline constexpr int kSendBarId = 2000; // id of sample 0's send; the others follow by sample index
inline constexpr int kSendBars = static_cast<int>(kInstrumentCount);

// Id of the first of: return, room size, damping, width, pre-delay and the three extras.
inline constexpr int kParameterBarId = 2110;
inline constexpr int kParameterBars = 8;

inline constexpr int kMaxBarPosition = 100;

// The position that shows the engine's current setting; 0 for an unknown id.
int barPosition(const SoundEngine& engine, int id);

// Applies a trackbar's position to the engine, which clamps. No-op for an unknown id.
void moveBar(SoundEngine& engine, int id, int position);

} // namespace percussomatic
