#include "playing.h"

#include "cards/card_settings.h"
#include "panel/control_state.h"

namespace percussomatic::tool {

PunchCard withSettings(PunchCard card) {
    if (!card.hasSettings) {
        card.hasSettings = true;
        card.lineVolumes.fill(1.0f);
        card.instruments.fill(1);
    }
    return card; // all else is at its default
}

double tempoBpm(const PunchCard& card) {
    constexpr double kPlainBpm = 120.0;
    return card.hasSettings ? rotaryToBpm(tempoRotaryOf(card)) : kPlainBpm;
}

bool isOn(const PunchCard& card, std::uint32_t sampleIndex) {
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

std::vector<Stroke> strokesOn(const PunchCard& card, int step) {
    std::vector<Stroke> strokes;
    for (int line = 0; line < kLineCount; ++line) {
        const float gain = lineGain(card, line);
        if (!card.pattern.isSet(line, step) || gain <= 0.0f) {
            continue;
        }
        const auto first = static_cast<std::uint32_t>(2 * line);
        for (const std::uint32_t sampleIndex : {first, first + 1}) {
            if (isOn(card, sampleIndex)) {
                strokes.push_back({sampleIndex, gain});
            }
        }
    }
    return strokes;
}

} // namespace percussomatic::tool
