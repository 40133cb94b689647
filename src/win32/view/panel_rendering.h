// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"
#include "win32/graphics/gdiplus_flat.h"
#include "win32/graphics/images.h"

namespace percussomatic {

// Draws the content of the main window. Only reads the state records; its own state is the
// background cache, which holds the static pictures at the current client size. GUI thread.

// In pixels; 0 x 0 if the window is null.
Size clientSize(HWND window) noexcept;

// Client pixels per layout unit.
double windowScale(HWND window) noexcept;

// The picture that shows the control in its current state; null if there is none.
const PixelImage* imageFor(int index) noexcept;

// Redraws the background at the window's client size, half of it on a second thread that ends
// before the function returns.
void rebuildBackgroundCache(HWND window);
bool backgroundFits(Size client) noexcept; // false if it must be rebuilt
void releaseBackgroundCache() noexcept;

// The WM_PAINT handler: composes every invalid rectangle off-screen and copies it to the window.
void paintPanel(HWND window);

// Composes a region of a client area into `pixels`, which has the region's size.
void composePanel(const PixelView& pixels, const PixelRect& region, Size client);

} // namespace percussomatic
