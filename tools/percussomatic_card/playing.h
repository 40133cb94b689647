#pragma once

#include "cards/punch_card.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace percussomatic::tool {

// What the instrument would play from a card, for the commands that play it in their own way.

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
