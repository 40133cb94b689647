// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace percussomatic {

// Which of the four reverb presets on offer the player has selected. Punch cards store this number,
// not the engine's preset number. It is never read back from the engine.
//
// Threads: GUI thread only.
struct EffectChoice {
    std::int32_t selectedPreset = 0; // 0 drum room, 1 warm room, 2 concert hall, 3 stadium
};

EffectChoice& effectChoice() noexcept;

void selectPreset(std::int32_t preset); // 0..3, clamped; also sets the engine's preset

// Texts of the effects window for the selected preset. Only the captions depend on the preset; each
// parameter does the same in the engine whatever its caption.
struct EffectCaptions {
    std::array<const wchar_t*, 5> parameters; // return, room size, damping, width, pre-delay
    const wchar_t* description;
};

const EffectCaptions& effectCaptions() noexcept; // of the selected preset

} // namespace percussomatic
