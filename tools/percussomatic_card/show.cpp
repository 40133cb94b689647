// SPDX-License-Identifier: MIT
#include "commands.h"

#include "cards/card_settings.h"
#include "cards/card_text.h"
#include "files.h"
#include "pattern/instruments.h"
#include "playback.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace percussomatic::tool {

namespace {

constexpr std::array<std::string_view, 4> kPresetNames{"DRUM ROOM", "WARM ROOM", "CONCERT HALL",
                                                       "STADIUM"};

template <typename... Values>
std::string formatted(const char* format, Values... values) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

std::string percent(float value) {
    return formatted("%.0f %%", 100.0 * double{unitValue(value)});
}

void printSettings(const PunchCard& card) {
    std::cout << formatted("Tempo    %.1f BPM\n", tempoBpm(card)) << "Length   "
              << card.sequenceLength << " steps\n"
              << "Master   " << percent(card.masterVolume) << "\nEffect   ";
    if (!card.effectEnabled) {
        std::cout << "off, ";
    }
    const auto preset = static_cast<std::size_t>(std::clamp(card.effectPreset, 0, 3));
    const double preDelayMs = card.effect.preDelayMs > 0.0f ? double{card.effect.preDelayMs} : 0.0;
    std::cout << kPresetNames[preset] << ", return " << percent(card.effect.effectReturn)
              << ", room " << percent(card.effect.roomSize) << ", damping "
              << percent(card.effect.damping) << ", width " << percent(card.effect.width)
              << formatted(", pre-delay %.0f ms\n", std::min(preDelayMs, double{kMaxPreDelayMs}));
}

// Text before a step: a blank between beats, a bracket before the first step that is not played.
std::string_view gapBefore(int step, int length) {
    return step == length ? " (" : step % 4 == 0 && step > 0 ? " " : "";
}

// 1, 5, 9 and 13 above their steps.
std::string stepNumbers(int length) {
    std::string text;
    std::size_t column = 0;
    for (int step = 0; step < kStepCount; ++step) {
        column += gapBefore(step, length).size();
        if (step % 4 == 0) {
            text.resize(column, ' ');
            text += std::to_string(step + 1);
        }
        ++column;
    }
    return text;
}

std::string stepsText(const PunchCard& card, int line) {
    const auto length = static_cast<int>(card.sequenceLength);
    std::string text;
    for (int step = 0; step < kStepCount; ++step) {
        text += gapBefore(step, length);
        text += card.pattern.isSet(line, step) ? 'X' : '.';
    }
    return text + (length < kStepCount ? ")" : "");
}

std::string instrumentText(const PunchCard& card, std::size_t position) {
    const std::uint32_t sampleIndex = sampleIndexOfSwitch(position);
    std::string text(kInstruments[sampleIndex].name);
    if (card.hasSettings) {
        text += card.instruments[position] != 0 ? " on" : " off";
        const float send = unitValue(card.effectSends[position]);
        text += send > 0.0f ? ", send " + percent(send) : "";
    }
    return text;
}

void printLine(const PunchCard& card, int line) {
    const auto at = static_cast<std::size_t>(line);
    std::cout << "Line " << line + 1 << "   " << stepsText(card, line) << "   ";
    if (card.hasSettings) {
        std::cout << formatted("%5s", percent(card.lineVolumes[at]).c_str()) << "   ";
    }
    std::cout << instrumentText(card, at) << "; " << instrumentText(card, at + kLineCount) << '\n';
}

} // namespace

int show(const Arguments& arguments) {
    const auto read = readCard(arguments.operands[0]);
    if (!read) {
        return kFailure;
    }
    const PunchCard& card = read->card;
    std::cout << "Title    " << printableUtf8(cardLabel(card, 0)) << '\n';
    if (card.hasSettings) {
        printSettings(card);
    } else {
        std::cout
            << "Holds only a rhythm: the panel keeps its tempo, length, volumes and instruments.\n";
    }
    std::cout << "\n         " << stepNumbers(static_cast<int>(card.sequenceLength)) << '\n';
    for (int line = 0; line < kLineCount; ++line) {
        printLine(card, line);
    }
    if (card.sequenceLength < kStepCount) {
        std::cout << "\nSteps in brackets are beyond the length and are not played.\n";
    }
    return kSuccess;
}

} // namespace percussomatic::tool
