// SPDX-License-Identifier: MIT
#include "cards/card_settings.h"

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "panel/control_state.h"

#include <algorithm>

namespace percussomatic {

float unitValue(float value) noexcept {
    return value > 0.0f ? std::min(value, 1.0f) : 0.0f;
}

std::uint32_t sliderPositionOf(float volume) noexcept {
    constexpr auto kTravel = static_cast<float>(kSliderTravel);
    return static_cast<std::uint32_t>(unitValue(volume) * kTravel + 0.5f);
}

double masterRotaryOf(const PunchCard& card) noexcept {
    return unitValue(card.masterVolume);
}

double tempoRotaryOf(const PunchCard& card) noexcept {
    return unitValue(card.tempo);
}

void applyCardEffect(const PunchCard& card) {
    SoundEngine& engine = soundEngine();
    selectPreset(card.effectPreset); // first, because it overwrites the settings below
    for (std::size_t position = 0; position < card.effectSends.size(); ++position) {
        engine.setSend(sampleIndexOfSwitch(position), card.effectSends[position]);
    }
    engine.setEffectSettings(card.effect);
    engine.setEffectEnabled(card.effectEnabled);
}

void captureCardEffect(PunchCard& card) {
    const SoundEngine& engine = soundEngine();
    card.effectEnabled = engine.isEffectEnabled();
    card.effectPreset = effectChoice().selectedPreset;
    for (std::size_t position = 0; position < card.effectSends.size(); ++position) {
        card.effectSends[position] = engine.getSend(sampleIndexOfSwitch(position));
    }
    card.effect = engine.getEffectSettings();
}

} // namespace percussomatic
