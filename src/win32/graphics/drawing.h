// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_image.h"
#include "win32/graphics/gdiplus_flat.h"

#include <cstdint>
#include <string_view>

namespace percussomatic {

// Drawing functions of the panel. Coordinates are client pixels, colours straight 0xAARRGGBB. GUI
// thread.

// Render target for one dirty rectangle: `pixels` holds `region` of the client area. Pictures and
// boxes are drawn by our own code, because GDI+ fills are slow. Text and dials are drawn by GDI+
// over the same pixels.
class Canvas {
public:
    Canvas(const PixelView& pixels, const PixelRect& region) : pixels_(pixels), region_(region) {}

    const PixelView& pixels() const noexcept { return pixels_; }
    const PixelRect& region() const noexcept { return region_; }
    Gdiplus::GpGraphics* graphics(); // created on first use; its coordinates are local

    // Whether the rectangle, including kRedrawMargin, overlaps the region.
    bool intersects(const PixelRect& rect) const noexcept;
    PixelRect toLocal(const PixelRect& rect) const noexcept; // relative to the region's corner

    // All blend with the present pixels and clip to the region. The outline is one pixel wide; its
    // right and bottom edges lie on `right` and `bottom`, just outside the filled rectangle.
    void draw(const PixelImage& picture, int left, int top) const noexcept;
    void fill(const PixelRect& rect, std::uint32_t argb) const noexcept;
    void outline(const PixelRect& rect, std::uint32_t argb) const noexcept;

private:
    PixelView pixels_;
    PixelRect region_;
    Bitmap bitmap_;
    Graphics graphics_;
};

// A bitmap that shares the pixels of the view, which must outlive it; null if the view is empty.
Bitmap bitmapOver(const PixelView& pixels);
Graphics graphicsOn(Gdiplus::GpBitmap* bitmap);

// Stretches the picture to the rectangle and rotates it clockwise about the rectangle's centre.
void drawRotated(Gdiplus::GpGraphics* graphics, const PixelImage& picture, const PixelRect& rect,
                 double degrees);

struct TextStyle {
    const wchar_t* family = L"Segoe UI";
    Gdiplus::FontStyle style = Gdiplus::FontStyleRegular;
    float sizePixels = 0;
    std::uint32_t argb = 0;
    bool singleLine = false; // trimmed with an ellipsis instead of wrapped

    bool operator==(const TextStyle&) const = default; // compares the family by address
};

// Centred horizontally and vertically. Uses a fallback font if the family is missing; no-op if the
// fallback is missing, too.
void drawText(Gdiplus::GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
              const TextStyle& style);

// Client pixels. Copies the cached result while text, style and background are unchanged.
void drawCenteredText(Canvas& canvas, std::wstring_view text, const PixelRect& rect,
                      const TextStyle& style);

struct BoxColours {
    std::uint32_t fill, edge, text;
};

// A filled and outlined box with its caption of one line, in client pixels.
void drawBox(Canvas& canvas, const PixelRect& rect, std::wstring_view text, float sizePixels,
             const BoxColours& colours);

} // namespace percussomatic
