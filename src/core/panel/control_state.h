// SPDX-License-Identifier: MIT
#pragma once

#include "panel/control_table.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace percussomatic {

inline constexpr int kSliderTravel = 650; // layout units from one end of a slider to the other

// What the player has set, beside the control table and indexed like it. GUI thread.
struct ControlState {
    std::array<std::uint8_t, kControlCount> toggleBits{};
    std::array<std::uint32_t, kControlCount> sliderOffset{}; // layout units, 0..kSliderTravel

    std::uint8_t& toggleBit(int index) noexcept {
        return toggleBits[static_cast<std::size_t>(index)];
    }
    std::uint32_t& offset(int index) noexcept {
        return sliderOffset[static_cast<std::size_t>(index)];
    }
};

ControlState& controlState() noexcept;

// All toggles off but the power switch, all sliders at 0.
void resetControlState() noexcept;

} // namespace percussomatic
