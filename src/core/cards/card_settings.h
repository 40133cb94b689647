// SPDX-License-Identifier: MIT
#pragma once

#include "cards/punch_card.h"

#include <cstddef>
#include <cstdint>

namespace percussomatic {

// From the numbers on a card to the instrument and back: the arithmetic that the panel and the
// companion tool share. Draws nothing and makes no system calls. GUI thread.

// Clamped to 0..1; a NaN counts as 0.
float unitValue(float value) noexcept;

// Layout units 0..650 of a line's slider.
std::uint32_t sliderPositionOf(float volume) noexcept;

// Rotary positions 0..1, widened to the rotaries' type.
double masterRotaryOf(const PunchCard& card) noexcept;
double tempoRotaryOf(const PunchCard& card) noexcept;

// Preset, sends, settings and switch of the effect: to and from the sound engine and the chosen
// preset. The caller refreshes the effects window.
void applyCardEffect(const PunchCard& card);
void captureCardEffect(PunchCard& card);

} // namespace percussomatic
