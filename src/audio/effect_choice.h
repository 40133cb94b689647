#pragma once

#include <cstdint>

namespace percussomatic {

// Which of the four reverb characters the player has chosen. Punch cards keep this
// choice, not the engine's preset number, and it is never read back from the engine.
//
// Threads: GUI thread only.
struct EffectChoice {
    std::int32_t selectedPreset = 0; // 0 drum room, 1 warm room, 2 concert hall, 3 stadium
};

EffectChoice& effectChoice() noexcept;
void resetEffectChoice() noexcept; // leaves the engine alone

void selectPreset(std::int32_t preset); // 0..3, clamped; sets the engine's preset too

} // namespace percussomatic
