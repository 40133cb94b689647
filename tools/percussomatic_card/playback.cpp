// SPDX-License-Identifier: MIT
#include "playback.h"

#include "cards/card_settings.h"
#include "panel/control_state.h"

namespace percussomatic::tool {

PunchCard withSettings(PunchCard card) {
    if (!card.hasSettings) {
        card.hasSettings = true;
        card.lineVolumes.fill(1.0f);
        card.instruments.fill(1);
    }
    return card; // the other settings have their defaults
}

double tempoBpm(const PunchCard& card) {
    constexpr double kDefaultBpm = 120.0;
    return card.hasSettings ? rotaryToBpm(tempoRotaryOf(card)) : kDefaultBpm;
}

bool isSwitchedOn(const PunchCard& card, std::uint32_t sampleIndex) {
    for (std::size_t position = 0; position < card.instruments.size(); ++position) {
        if (sampleIndexOfSwitch(position) == sampleIndex) {
            return card.instruments[position] != 0;
        }
    }
    return false;
}

float lineGain(const PunchCard& card, int line) {
    const float volume = card.lineVolumes[static_cast<std::size_t>(line)];
    return static_cast<float>(sliderPositionOf(volume)) / static_cast<float>(kSliderTravel);
}

std::vector<Hit> hitsOnStep(const PunchCard& card, int step) {
    std::vector<Hit> hits;
    for (int line = 0; line < kLineCount; ++line) {
        const float gain = lineGain(card, line);
        if (!card.pattern.isSet(line, step) || gain <= 0.0f) {
            continue;
        }
        const auto first = static_cast<std::uint32_t>(2 * line);
        for (const std::uint32_t sampleIndex : {first, first + 1}) {
            if (isSwitchedOn(card, sampleIndex)) {
                hits.push_back({sampleIndex, gain});
            }
        }
    }
    return hits;
}

} // namespace percussomatic::tool
