// SPDX-License-Identifier: MIT
#pragma once

#include "audio/sound_engine.h"
#include "input/panel_controls.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"
#include "sequencer/transport.h"
#include "support/fake_system.h"
#include "support/virtual_clock.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace percussomatic {

// Access to the panel by the names of its controls, in a window of the size used on a screen of
// 1920 x 1080.

inline constexpr int kClientWidth = 1618, kClientHeight = 1040;
inline constexpr double kScale = 1040.0 / 5153.0;

inline std::uint8_t& toggleBit(std::string_view name) {
    return controlState().toggleBit(findControl(name));
}

inline std::uint32_t& sliderOffset(std::string_view name) {
    return controlState().offset(findControl(name));
}

inline PixelPoint centreOf(const PixelRect& rect) {
    return {rect.left + rect.width() / 2, rect.top + rect.height() / 2};
}

inline PixelPoint centreOf(int control) {
    return centreOf(controlClientRect(control, kScale));
}

inline PixelPoint centreOf(std::string_view name) {
    return centreOf(findControl(name));
}

inline Press press(std::string_view name) {
    return pressControl(centreOf(name), kScale);
}

// The number of voices triggered since the last call. Resets them.
inline std::ptrdiff_t takeVoices() {
    const auto sounding = std::ranges::count(soundEngine().voices, true, &Voice::active);
    soundEngine().deactivateAllVoices();
    return sounding;
}

} // namespace percussomatic
