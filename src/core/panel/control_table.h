// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace percussomatic {

// The front panel as a fixed composition of named pictures in layout space, where one unit is one
// pixel of the artwork. A control's index is its row; later rows lie on top. The table never
// changes: any thread.

inline constexpr int kControlCount = 139;
inline constexpr int kNoControl = -1;

struct ControlRow {
    std::string_view layerName; // carried along, not read
    std::string_view name;      // the key used everywhere, compared without regard to case
    std::string_view note;      // carried along, not read
    std::string_view stableId;  // carried along, not read
    std::string_view image;
    std::string_view imageOn; // empty: one picture only
    std::string_view type;    // "Image", "ImageToggleButton" or "Slider"
    std::int32_t x, y, width, height;
    std::uint8_t visible;
};

// What a control does, derived from its name, picture and type.
enum class ControlKind : std::uint8_t {
    picture, // background: drawn once, does nothing
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
    toggle // any other switch: an instrument's, or sw_014, which lies under sw_015 without function
};

struct ControlRole {
    ControlKind kind = ControlKind::picture;
    int line = -1;            // 0..5 of a step button or a line's clear switch
    int step = -1;            // 0..15 of a step button
    std::uint32_t length = 0; // steps that a length switch selects
};

std::span<const ControlRow, kControlCount> controlRows() noexcept;
const ControlRow& controlRow(int index) noexcept;   // 0..138
const ControlRole& controlRole(int index) noexcept; // 0..138
inline ControlKind controlKind(int index) noexcept {
    return controlRole(index).kind;
}

// ASCII letters of either case are equal.
bool sameName(std::string_view a, std::string_view b) noexcept;

// Index of the first visible row of that name, or kNoControl.
int findControl(std::string_view name) noexcept;

// Index of the button of line 0..5 and step 0..15.
int stepButtonIndex(int line, int step) noexcept;

bool isToggle(const ControlRow& row) noexcept; // type compared exactly
bool isSlider(const ControlRow& row) noexcept;
bool isRotary(const ControlRow& row) noexcept; // rotary_001 or rotary_002
bool isBeatLamp(const ControlRow& row) noexcept;

// Drawn in its current state at every paint; all other visible rows are background.
bool isInteractive(const ControlRow& row) noexcept;

// 1..96 for a visible step button, line by line; 0 for any other row.
int stepButtonNumber(const ControlRow& row) noexcept;

} // namespace percussomatic
