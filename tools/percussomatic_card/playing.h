#pragma once

#include "cards/punch_card.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace percussomatic::tool {

// What the instrument would play from a card, for the commands that play it in their own way.

struct Instrument {
    std::string_view name;
    std::string_view recording; // as the instrument's file is called
    std::uint8_t midiKey;       // of General MIDI's percussion channel
};

// By sample index: A and B of line 1, A and B of line 2 and so on.
extern const std::array<Instrument, kInstrumentCount> kInstruments;

// The card itself, or, if it brings a rhythm only, the rhythm with everything on at full volume,
// 120 BPM, sixteen steps and no effect.
PunchCard withSettings(PunchCard card);

// Of the card as it was read: without settings it is exactly 120, which no tempo on a card is.
double tempoBpm(const PunchCard& card);

bool isOn(const PunchCard& card, std::uint32_t sampleIndex);

// Gain 0..1 of line 0..5, as its slider would stand.
float lineGain(const PunchCard& card, int line);

struct Stroke {
    std::uint32_t sampleIndex;
    float gain; // above 0
};

// What sounds on a step, in the order of triggering.
std::vector<Stroke> strokesOn(const PunchCard& card, int step);

} // namespace percussomatic::tool
