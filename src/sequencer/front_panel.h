#pragma once

#include "sequencer/panel_state.h"
#include "ui/control_layout.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace percussomatic {

// What each control of the panel does under the mouse. Points are client pixels, scales client
// pixels per layout unit. GUI thread.

struct LengthSwitch {
    std::string_view name;
    std::uint32_t length; // steps
};

inline constexpr std::array<LengthSwitch, 7> kLengthSwitches{{
    {"sw_009", 5},
    {"sw_010", 6},
    {"sw_011", 9},
    {"sw_012", 10},
    {"sw_013", 12},
    {"sw_015", 15},
    {"sw_016", 16},
}};

// Clear switches of lines 1 to 6.
inline constexpr std::array<std::string_view, kLineCount> kLineClearSwitches{
    "sw_029", "sw_027", "sw_025", "sw_023", "sw_021", "sw_019"};

enum class Press {
    none,  // no control there
    acted, // done with the press
    held   // shows lit until the button is released: capture the mouse
};

// Step buttons, switches and the power switch.
Press pressControl(PixelPoint client, double scale);

// Releases what is held and repaints it; true if anything was.
bool releaseControls();

// Drags begin on a hit (true) and move by the cursor's client pixels.
bool beginRotaryDrag(PixelPoint client, double scale);
void dragRotary(int clientY, bool fine); // fine: a quarter of the way
void endRotaryDrag();
bool beginSliderDrag(PixelPoint client, double scale);
void dragSlider(int clientX, double scale);
void endSliderDrag();

// One notch of the wheel is 120. True when a rotary lies under the point and the wheel moved.
bool turnWheel(PixelPoint client, double scale, int delta, bool fine);

// Sends a rotary's value to where it is heard: the tempo, or the square as master gain.
void applyRotary(int index);

// Whether a control shows its lit picture now.
bool controlLit(int index) noexcept;

} // namespace percussomatic
