// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

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

// A window of fixed size, in design pixels.
struct WindowDesign {
    Size outer;   // 0 x 0 if the content alone determines the size
    Size content; // of the client area, as far as controls reach
};

// Outer size in pixels. The system draws the frame at its own DPI, so `frame` is in pixels; where
// it is thicker than the design allows for, the window is larger.
Size outerSize(const WindowDesign& design, Size frame, int dpi) noexcept;

// The largest DPI, up to the display's, at which the window fits the room, in pixels. Not below 48,
// at which the texts are 7 pixels high.
int dpiThatFits(const WindowDesign& design, Size frame, Size room) noexcept;

} // namespace percussomatic
