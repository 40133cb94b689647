// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace percussomatic {

// The front panel: a fixed composition of named pictures. Positions are in layout units; one unit
// is one pixel of the artwork. A control's index is its row number; later rows are drawn on top.
// The table is constant, so any thread may read it.

inline constexpr int kControlCount = 139;
inline constexpr int kNoControl = -1;

struct ControlRow {
    std::string_view layerName; // not used by the program
    std::string_view name;      // key for all look-ups, compared case-insensitively
    std::string_view note;      // not used by the program
    std::string_view stableId;  // not used by the program
    std::string_view image;
    std::string_view imageOn; // empty if the control has only one picture
    std::string_view type;    // "Image", "ImageToggleButton" or "Slider"
    std::int32_t x, y, width, height;
    std::uint8_t visible;
};

// What a control does, derived from its name, picture and type.
enum class ControlKind : std::uint8_t {
    picture, // background: drawn once, no function
    beatLamp,
    rotary,
    slider,
    stepButton,
    startStop,
    edit,
    length,
    clearAll,
    clearLine,
    power,
    toggle // an instrument's switch, or sw_014, which lies under sw_015 and has no function
};

struct ControlRole {
    ControlKind kind = ControlKind::picture;
    int line = -1;            // 0..5 of a step button or a line's clear switch
    int step = -1;            // 0..15 of a step button
    std::uint32_t length = 0; // 5..16, steps that a length switch selects
};

std::span<const ControlRow, kControlCount> controlRows() noexcept;
const ControlRow& controlRow(int index) noexcept;   // 0..138
const ControlRole& controlRole(int index) noexcept; // 0..138
inline ControlKind controlKind(int index) noexcept {
    return controlRole(index).kind;
}

// Case-insensitive for ASCII letters.
bool sameName(std::string_view a, std::string_view b) noexcept;

// Index of the first visible row with that name, or kNoControl.
int findControl(std::string_view name) noexcept;

// Index of a step button; line 0..5, step 0..15.
int stepButtonIndex(int line, int step) noexcept;

bool isToggle(const ControlRow& row) noexcept; // compares the type case-sensitively
bool isSlider(const ControlRow& row) noexcept;
bool isRotary(const ControlRow& row) noexcept; // rotary_001 or rotary_002
bool isBeatLamp(const ControlRow& row) noexcept;

// True for a visible control that is drawn in its current state at every paint. All other visible
// rows belong to the background.
bool isInteractive(const ControlRow& row) noexcept;

// 1..96 for a visible step button, line by line; 0 for any other row.
int stepButtonNumber(const ControlRow& row) noexcept;

} // namespace percussomatic
