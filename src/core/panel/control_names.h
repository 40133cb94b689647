// SPDX-License-Identifier: MIT
// Names of the panel's controls, by function.
#pragma once

#include "pattern/instruments.h"
#include "pattern/pattern.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace percussomatic::control {

// Settings files contain these names, so they must never change.
inline constexpr std::string_view kPower = "pw_001";
inline constexpr std::string_view kMasterRotary = "rotary_001";
inline constexpr std::string_view kTempoRotary = "rotary_002";
inline constexpr std::string_view kStartStop = "sw_007";
inline constexpr std::string_view kEdit = "sw_008";
inline constexpr std::string_view kClearAll = "sw_018";
inline constexpr std::string_view kBeatLamp = "bin_001";
inline constexpr std::string_view kReaderPlate = "c_scheda_001";
inline constexpr std::string_view kStepPrefix = "bottone_"; // then 001 to 096, line by line

// One switch for each of kSequenceLengths, in that order.
inline constexpr std::array<std::string_view, kSequenceLengths.size()> kLengthSwitches{
    "sw_009", "sw_010", "sw_011", "sw_012", "sw_013", "sw_015", "sw_016"};

// The controls of one rhythm line. Line 6's B switch is sw_017, because sw_018 clears the pattern.
struct Line {
    std::string_view slider;
    std::array<std::string_view, kInstrumentsPerLine> switches; // A, B
    std::string_view clear;
};

inline constexpr std::array<Line, kLineCount> kLines{{
    {"slider_001", {"sw_001", "sw_028"}, "sw_029"},
    {"slider_002", {"sw_002", "sw_026"}, "sw_027"},
    {"slider_003", {"sw_003", "sw_024"}, "sw_025"},
    {"slider_004", {"sw_004", "sw_022"}, "sw_023"},
    {"slider_005", {"sw_005", "sw_020"}, "sw_021"},
    {"slider_006", {"sw_006", "sw_017"}, "sw_019"},
}};

constexpr const Line& line(int index) noexcept {
    return kLines[static_cast<std::size_t>(index)];
}

// The switch of an instrument; position 0..11 in switch order: A of lines 1 to 6, then B of lines 1
// to 6.
constexpr std::string_view instrumentSwitch(std::size_t position) noexcept {
    return kLines[position % kLineCount].switches[position / kLineCount];
}

} // namespace percussomatic::control
