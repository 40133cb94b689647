#pragma once

#include "cards/punch_card.h"

#include <cstddef>
#include <cstdint>

namespace percussomatic {

// From the numbers on a card to the instrument and back: the arithmetic that the panel and the
// companion tool share. Nothing here draws or asks the system for anything. GUI thread.

// Position 0..11 in switch order to the sample index that the engine and its sends go by, whatever
// the loads of the recordings returned.
constexpr std::uint32_t sampleIndexOfSwitch(std::size_t position) noexcept {
    return static_cast<std::uint32_t>(position < kLineCount ? 2 * position
                                                            : 2 * (position - kLineCount) + 1);
}

// Clamped to 0..1; a NaN counts as 0.
float unitValue(float value) noexcept;

// Layout units 0..650 of a line's slider.
std::uint32_t sliderPositionOf(float volume) noexcept;

// Rotary positions, widened: what the panel's rotaries take.
double masterRotaryOf(const PunchCard& card) noexcept;
double tempoRotaryOf(const PunchCard& card) noexcept;

// Preset, sends, return, room, damping, width, pre-delay, enabled: to and from the instrument's
// engine and the chosen preset. The effects window is the caller's to refresh.
void applyCardEffect(const PunchCard& card);
void captureCardEffect(PunchCard& card);

} // namespace percussomatic
