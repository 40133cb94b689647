// SPDX-License-Identifier: MIT
#pragma once

#include "cards/punch_card.h"

#include <cstddef>
#include <cstdint>

namespace percussomatic {

// Conversions between the values of a card and the instrument, shared by the panel and the
// companion tool. No drawing and no system calls. GUI thread.

// Clamped to 0..1; NaN becomes 0.
float unitValue(float value) noexcept;

// Slider offset in layout units, 0..kSliderTravel.
std::uint32_t sliderPositionOf(float volume) noexcept;

// Rotary positions, 0..1.
double masterRotaryOf(const PunchCard& card) noexcept;
double tempoRotaryOf(const PunchCard& card) noexcept;

// Copy preset, sends, settings and on/off state of the effect to the sound engine and the preset
// choice, and back. The caller refreshes the effects window.
void applyCardEffect(const PunchCard& card);
void captureCardEffect(PunchCard& card);

} // namespace percussomatic
