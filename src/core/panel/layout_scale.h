// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

namespace percussomatic {

// The panel size that the player has chosen: 0.25..1.0 of what fits the screen, stored as one
// number in a text file in the working directory. GUI thread.

inline constexpr const char* kLayoutScaleFile = "LumivardaLayoutScale.txt";
inline constexpr double kLayoutScaleStep = 0.05;

// The current scale; read from the file once, at start-up.
double& layoutScale() noexcept;

// Reads the number at the beginning of the file, clamped to 0.25..1.0. Returns 1.0 if the file
// cannot be opened or does not begin with a number.
double readLayoutScale(const char* path);

// Writes the scale with three decimals, replacing the file's content. No-op if the file cannot be
// opened.
void writeLayoutScale(const char* path, double scale);

// Returns scale + delta, clamped to 0.25..1.0.
double steppedLayoutScale(double scale, double delta) noexcept;

// Client size of the panel's window at start-up. All sizes in pixels.
Size initialWindowSize(int screenWidth, int screenHeight, double layoutScale) noexcept;

} // namespace percussomatic
