// SPDX-License-Identifier: MIT
#pragma once

namespace percussomatic {

// Positions and sizes of strip, dialogs and windows are given in design pixels, for a screen of 96
// DPI. They are scaled to the system's DPI, so that they stay readable on a high-resolution screen.

inline constexpr int kDesignDpi = 96;

// The system's DPI. Start-up sets it before anything else reads it; 96 until then.
int& displayDpi() noexcept;

// Converts design pixels to pixels of this screen, or of less DPI for what would not fit. The
// integer version rounds half up.
int scaledForDpi(int designPixels, int dpi = displayDpi()) noexcept;
float scaledForDpi(float designPixels, int dpi = displayDpi()) noexcept;

} // namespace percussomatic
