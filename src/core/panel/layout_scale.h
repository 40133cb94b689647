// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

namespace percussomatic {

// The player's size of the panel, 0.25..1.0 of what fits the screen, kept as one number in a text
// file of the working directory. GUI thread.

inline constexpr const char* kLayoutScaleFile = "LumivardaLayoutScale.txt";
inline constexpr double kLayoutScaleStep = 0.05;

// The size that the player has chosen; read once at start-up.
double& layoutScale() noexcept;

// The scale written in the file: its first number, clamped to 0.25..1.0. 1.0 when the file cannot
// be opened or does not begin with a number.
double readLayoutScale(const char* path);

// Replaces the file by the scale with three decimals. A file that cannot be opened stays as it is.
void writeLayoutScale(const char* path, double scale);

// One step up or down, clamped to 0.25..1.0.
double steppedLayoutScale(double scale, double delta) noexcept;

// Client size in pixels of a panel at this layout scale on a screen of that many pixels.
Size initialWindowSize(int screenWidth, int screenHeight, double layoutScale) noexcept;

} // namespace percussomatic
