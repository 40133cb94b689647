#include "playing.h"

#include "cards/card_settings.h"
#include "sequencer/transport.h"

namespace percussomatic::tool {

const std::array<Instrument, kInstrumentCount> kInstruments{{
    {"Rolling Snare", kRhythmLines[0].sampleA, 40}, // electric snare: General MIDI has no roll
    {"Cymbal 1", kRhythmLines[0].sampleB, 49},      // crash cymbal 1
    {"Cymbal 2", kRhythmLines[1].sampleA, 51},      // ride cymbal 1
    {"Snare", kRhythmLines[1].sampleB, 38},         // acoustic snare
    {"Timbal 2", kRhythmLines[2].sampleA, 66},      // low timbale
    {"Charleston", kRhythmLines[2].sampleB, 42},    // closed hi-hat
    {"Triangle", kRhythmLines[3].sampleA, 81},      // open triangle
    {"Clave", kRhythmLines[3].sampleB, 75},         // claves
    {"Block 2", kRhythmLines[4].sampleA, 77},       // low wood block
    {"Timbal 1", kRhythmLines[4].sampleB, 65},      // high timbale
    {"Block 1", kRhythmLines[5].sampleA, 76},       // high wood block
    {"Bass Drum", kRhythmLines[5].sampleB, 36},     // bass drum 1
}};

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
    return card.hasSettings ? tempoRotaryOf(card) * (kMostBpm - kLeastBpm) + kLeastBpm : kPlainBpm;
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
