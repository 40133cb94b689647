// SPDX-License-Identifier: MIT
#pragma once

#include "audio/sound_engine.h"
#include "input/panel_controls.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/control_state.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic {

// The panel by the names of its controls, in the window that fills a screen of 1920 x 1080.

using Names = std::vector<std::string>;

inline constexpr int kClientWidth = 1618, kClientHeight = 1040;
inline constexpr double kScale = 1040.0 / 5153.0;

inline std::uint8_t& toggleBit(std::string_view name) {
    return controlState().toggleBit(findControl(name));
}

inline std::uint32_t& sliderOffset(std::string_view name) {
    return controlState().offset(findControl(name));
}

inline PixelPoint centreOf(int control) {
    const PixelRect rect = controlClientRect(control, kScale);
    return {rect.left + rect.width() / 2, rect.top + rect.height() / 2};
}

inline PixelPoint centreOf(std::string_view name) {
    return centreOf(findControl(name));
}

inline Press press(std::string_view name) {
    return pressControl(centreOf(name), kScale);
}

// How many voices have been started since the last call; they are idle again.
inline std::ptrdiff_t takeVoices() {
    const auto& voices = soundEngine().voices;
    const auto sounding = std::count_if(voices.begin(), voices.end(),
                                        [](const Voice& voice) { return voice.active; });
    soundEngine().deactivateAllVoices();
    return sounding;
}

} // namespace percussomatic
