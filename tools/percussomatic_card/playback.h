// SPDX-License-Identifier: MIT
#pragma once

#include "cards/punch_card.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace percussomatic::tool {

// What the instrument would play from a card, for the commands `render` and `midi`.

// The card itself. A card that holds only a rhythm is given all instruments at full volume, 120
// BPM, 16 steps and no effect.
PunchCard withSettings(PunchCard card);

// Takes the card as it was read. Without settings the tempo is exactly 120 BPM; a tempo stored on a
// card is rounded by its float.
double tempoBpm(const PunchCard& card);

bool isSwitchedOn(const PunchCard& card, std::uint32_t sampleIndex);

// Gain 0..1 of line 0..5: the card's volume rounded to a slider position.
float lineGain(const PunchCard& card, int line);

struct Hit {
    std::uint32_t sampleIndex;
    float gain; // 0 < gain <= 1
};

// What sounds on a step, in the order in which the voices are triggered.
std::vector<Hit> hitsOnStep(const PunchCard& card, int step);

} // namespace percussomatic::tool
