#pragma once

#include "fuzz/fuzzing.h"
#include "sequencer/sequencer.h"

#include <array>
#include <cstdint>

namespace percussomatic::fuzz {

// The instrument's engine with tiny recordings of all kinds, and the plain engine beside it.

using Indices = std::array<std::int32_t, 2 * kLineCount>;

// Where the recordings lie; loaded once, since the engine only ever appends.
const Indices& loadedRecordings();

// As after the start.
void resetSound();

// The plain engine's tail goes when the engine's has gone; to be called after whatever may end it.
void clearPlainTail();

// One stretch of both engines, which must be the same to the bit.
void render(std::uint32_t frames);

// What can be done to the engine: voices struck, and the effects window with the auto-stop.
void trigger(Input& input);
void turnEffect(Input& input);

} // namespace percussomatic::fuzz
