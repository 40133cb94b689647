#pragma once

#include "ui/control_layout.h"
#include "ui/gdiplus_flat.h"
#include "ui/images.h"

#include <cstdint>
#include <string_view>

namespace percussomatic {

// Everything the main window shows. Reads every state record and writes none but its own background
// cache. Client pixels unless layout units are named; colours are 0xAARRGGBB. GUI thread.

// The static pictures at the present client size, under the controls of every paint.
struct BackgroundCache {
    Bitmap bitmap;
    int width = 0, height = 0;
};

// Client pixels per layout unit of the window.
double windowScale(HWND window) noexcept;

// The picture a control shows now, or null.
const Picture* imageFor(int index) noexcept;

void rebuildBackgroundCache(HWND window);
void releaseBackgroundCache() noexcept;

// Composes what is invalid off-screen and copies it to the window: the WM_PAINT handler.
void paintPanel(HWND window);

// The same for any region of a client area, into graphics whose origin is the region's corner.
void composePanel(Gdiplus::GpGraphics* graphics, const PixelRect& region, int clientWidth,
                  double scale);

// "Segoe UI" of that many pixels, centred both ways. Nothing where the font is missing.
void drawCenteredText(Gdiplus::GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
                      float sizePixels, std::uint32_t argb);

// Window pixels in an off-screen bitmap of 32-bit premultiplied pixels.
Bitmap newBitmap(int width, int height);

} // namespace percussomatic
