// SPDX-License-Identifier: MIT
#pragma once

#include "panel/control_table.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace percussomatic {

inline constexpr int kSliderTravel = 650; // layout units from end to end

// What the player has set. Indexed like the control table. GUI thread.
struct ControlState {
    std::array<std::uint8_t, kControlCount> toggleBits{};    // 1 = on
    std::array<std::uint32_t, kControlCount> sliderOffset{}; // layout units, 0..kSliderTravel

    std::uint8_t& toggleBit(int index) noexcept {
        return toggleBits[static_cast<std::size_t>(index)];
    }
    std::uint32_t& offset(int index) noexcept {
        return sliderOffset[static_cast<std::size_t>(index)];
    }
};

ControlState& controlState() noexcept;

// Turns all toggles off except the power switch, and moves all sliders to 0.
void resetControlState() noexcept;

} // namespace percussomatic
