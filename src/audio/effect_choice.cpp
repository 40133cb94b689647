#include "audio/effect_choice.h"

#include "audio/sound_engine.h"

#include <algorithm>
#include <array>

namespace percussomatic {

namespace {

// The engine's presets 2 and 3 are not offered.
constexpr std::array<std::int32_t, 4> kEnginePresets{0, 1, 4, 5};

EffectChoice theChoice;

} // namespace

EffectChoice& effectChoice() noexcept {
    return theChoice;
}

void resetEffectChoice() noexcept {
    theChoice = {};
}

void selectPreset(std::int32_t preset) {
    theChoice.selectedPreset = std::clamp(preset, 0, 3);
    soundEngine().setEffectPreset(
        kEnginePresets[static_cast<std::size_t>(theChoice.selectedPreset)]);
}

} // namespace percussomatic
