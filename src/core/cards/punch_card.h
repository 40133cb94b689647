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

// A punch card: one rhythm with the panel settings that go with it, and the text it is kept as.
// Reading and writing work on bytes in memory and give the same on every system and in every
// locale.

inline constexpr int kCardSlots = 10;

// Lists of twelve are in switch order: the A instruments of lines 1 to 6, then the B instruments.
struct PunchCard {
    bool used = false;
    std::wstring title;       // empty: the slot's default label
    bool hasSettings = false; // off for cards of versions 1 and 2, which hold only a rhythm
    std::array<float, kLineCount> lineVolumes{};              // 0..1
    float masterVolume = 1.0f;                                // 0..1, as the rotary stands
    float tempo = 0.4f;                                       // 0..1, as the rotary stands
    std::array<std::uint8_t, kInstrumentCount> instruments{}; // 0 = off
    std::uint32_t sequenceLength = 16;                        // steps
    bool effectEnabled = false;
    std::int32_t effectPreset = 0; // the player's choice 0..3; any number in a card from elsewhere
    std::array<float, kInstrumentCount> effectSends{}; // 0..1
    EffectSettings effect{.effectReturn = 0.2f,        // kept as read
                          .roomSize = 0.42f,
                          .damping = 0.58f,
                          .width = 0.92f,
                          .preDelayMs = 5.0f};
    Pattern pattern;
};

// Slots are 0..9; players count them from 1.
std::wstring defaultCardLabel(int slot); // "PUNCH CARD 01"
std::wstring cardLabel(const PunchCard& card, int slot);

// A message about a line of the card, in words for the player (UTF-8).
struct CardMessage {
    int line = 0; // of the file, from 1
    std::string text;
};

struct CardReport {
    int version = 0;                   // 1..4; 0 while the first line is not recognised
    std::vector<CardMessage> warnings; // values that are read differently from what is written
    std::optional<CardMessage> fault;  // why the card is refused
};

// Reads versions 1 to 4, tolerantly where old cards need it; the card returned is marked used.
// Nullopt for a card that is refused. Throws std::invalid_argument or std::out_of_range for a
// number that cannot be converted, in the words of the standard library ("invalid stof argument",
// "stof argument out of range"); the report then names the fault as well.
std::optional<PunchCard> parsePunchCard(std::string_view bytes, CardReport* report = nullptr);

// Version 4. An empty title is written as the slot's label.
std::string writePunchCard(const PunchCard& card, int slot);

} // namespace percussomatic
