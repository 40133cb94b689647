// SPDX-License-Identifier: MIT
#pragma once

#include "audio/effect_settings.h"
#include "pattern/instruments.h"
#include "pattern/pattern.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic {

// A punch card: a rhythm with its panel settings, and the text format it is stored in. Reading and
// writing work on bytes in memory and do not depend on the system or the locale.

inline constexpr int kCardSlots = 10;

// Lists of twelve are in switch order: the A instruments of lines 1 to 6, then the B instruments.
struct PunchCard {
    bool used = false;
    std::wstring title;       // empty: the slot's default label
    bool hasSettings = false; // false for versions 1 and 2, which hold only a rhythm
    std::array<float, kLineCount> lineVolumes{};              // 0..1
    float masterVolume = 1.0f;                                // rotary position, 0..1
    float tempo = 0.4f;                                       // rotary position, 0..1
    std::array<std::uint8_t, kInstrumentCount> instruments{}; // 0 = off
    std::uint32_t sequenceLength = 16;                        // steps
    bool effectEnabled = false;
    std::int32_t effectPreset = 0; // 0..3 on our own cards; others may hold any number
    std::array<float, kInstrumentCount> effectSends{}; // 0..1
    EffectSettings effect{.effectReturn = 0.2f,        // not clamped
                          .roomSize = 0.42f,
                          .damping = 0.58f,
                          .width = 0.92f,
                          .preDelayMs = 5.0f};
    Pattern pattern;
};

// Slots are 0..9, shown to the player from 1.
std::wstring defaultCardLabel(int slot); // "PUNCH CARD 01"
std::wstring cardLabel(const PunchCard& card, int slot);

// A message to the player about one line of a card.
struct CardMessage {
    int line = 0;     // of the file, from 1
    std::string text; // UTF-8
};

struct CardReport {
    int version = 0;                   // 1..4; 0 if the first line is not recognised
    std::vector<CardMessage> warnings; // values not read as written; a silent card
    std::optional<CardMessage> fault;  // why the card is refused
};

// Reads versions 1 to 4 and marks the card as used. Deviations found in old cards only cause
// warnings. Nullopt if the card is refused. A number that cannot be converted throws
// std::invalid_argument or std::out_of_range with the text of the standard library ("invalid stof
// argument", "stof argument out of range"). The report holds the fault in either case.
std::optional<PunchCard> parsePunchCard(std::string_view bytes, CardReport* report = nullptr);

// Writes version 4. An empty title becomes the slot's default label.
std::string writePunchCard(const PunchCard& card, int slot);

} // namespace percussomatic
