#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace percussomatic {

// Which of the four reverb characters the player has chosen. Punch cards store this choice, not the
// engine's preset number, and it is never read back from the engine.
//
// Threads: GUI thread only.
struct EffectChoice {
    std::int32_t selectedPreset = 0; // 0 drum room, 1 warm room, 2 concert hall, 3 stadium
};

EffectChoice& effectChoice() noexcept;

void selectPreset(std::int32_t preset); // 0..3, clamped; sets the engine's preset too

// What the effects window says about the chosen character. The captions of the parameters depend on
// the character; what they do in the engine does not.
struct EffectCaptions {
    // Return, room size, damping, width and pre-delay.
    std::array<const wchar_t*, 5> parameters;
    const wchar_t* description;
};

const EffectCaptions& effectCaptions() noexcept;

} // namespace percussomatic
