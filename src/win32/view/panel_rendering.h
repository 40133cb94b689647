// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"
#include "win32/graphics/gdiplus_flat.h"
#include "win32/graphics/images.h"

namespace percussomatic {

// Everything the main window shows. Reads every state record and writes none but its own background
// cache: the static pictures at the present client size, under the controls of every paint. GUI
// thread.

// In pixels; 0 x 0 without a window.
Size clientSize(HWND window) noexcept;

// Client pixels per layout unit of the window.
double windowScale(HWND window) noexcept;

// The picture a control shows now, or null.
const PixelImage* imageFor(int index) noexcept;

// Fills the background anew, half of it on a thread that ends with the call.
void rebuildBackgroundCache(HWND window);
bool backgroundFits(Size client) noexcept;
void releaseBackgroundCache() noexcept;

// Composes every rectangle that is invalid off-screen and copies it to the window: the WM_PAINT
// handler.
void paintPanel(HWND window);

// The same for any region of a client area, into pixels of the region's size.
void composePanel(const PixelView& pixels, const PixelRect& region, Size client);

} // namespace percussomatic
