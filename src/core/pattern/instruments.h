// SPDX-License-Identifier: MIT
// The twelve instruments: names, recordings and MIDI keys.
#pragma once

#include "pattern/pattern.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace percussomatic {

struct Instrument {
    std::string_view name;      // as shown to the player
    std::string_view recording; // name of its WAVE file
    std::uint8_t midiKey;       // key on the General MIDI percussion channel
};

inline constexpr int kInstrumentsPerLine = 2; // A and B
inline constexpr std::size_t kInstrumentCount = std::size_t{kInstrumentsPerLine} * kLineCount;

// Indexed by sample index: A and B of line 1, A and B of line 2, and so on.
inline constexpr std::array<Instrument, kInstrumentCount> kInstruments{{
    {"Rolling Snare", "rolling_snare.wav", 40}, // electric snare: General MIDI has no roll
    {"Cymbal 1", "cymbal_1.wav", 49},           // crash cymbal 1
    {"Cymbal 2", "cymbal_2.wav", 51},           // ride cymbal 1
    {"Snare", "snare.wav", 38},                 // acoustic snare
    {"Timbal 2", "timbal_2.wav", 66},           // low timbale
    {"Charleston", "charleston.wav", 42},       // closed hi-hat
    {"Triangle", "triangle.wav", 81},           // open triangle
    {"Clave", "clave.wav", 75},                 // claves
    {"Block 2", "block_2.wav", 77},             // low wood block
    {"Timbal 1", "timbal_1.wav", 65},           // high timbale
    {"Block 1", "block_1.wav", 76},             // high wood block
    {"Bass Drum", "bass_drum.wav", 36},         // bass drum 1
}};

// Sample index of an instrument; line 0..5, place 0 (A) or 1 (B).
constexpr std::size_t sampleIndexOf(int line, int place) noexcept {
    return static_cast<std::size_t>(kInstrumentsPerLine * line + place);
}

// Sample index of position 0..11 in switch order, in which cards list the instruments: A of lines 1
// to 6, then B of lines 1 to 6.
constexpr std::uint32_t sampleIndexOfSwitch(std::size_t position) noexcept {
    return static_cast<std::uint32_t>(position < kLineCount ? 2 * position
                                                            : 2 * (position - kLineCount) + 1);
}

} // namespace percussomatic
