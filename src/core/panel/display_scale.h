#pragma once

namespace percussomatic {

// Places and sizes that are given in pixels hold on a screen of 96 DPI and grow with the system's
// setting, so that strip, dialogs and windows stay readable on a fine screen. Set once, before
// anything reads it.

inline constexpr int kDesignDpi = 96;

// The system's setting; 96 until start-up has asked for it.
int& displayDpi() noexcept;

// So many written pixels on this screen, rounded half up.
int scaledForDpi(int designPixels) noexcept;
float scaledForDpi(float designPixels) noexcept;

} // namespace percussomatic
