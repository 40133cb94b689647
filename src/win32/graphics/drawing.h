// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_image.h"
#include "win32/graphics/gdiplus_flat.h"

#include <cstdint>
#include <string_view>

namespace percussomatic {

// The few strokes that the panel is drawn with. Client pixels; colours are 0xAARRGGBB. GUI thread.

// Part of the client area being painted: pixels whose first is the region's corner. Pictures and
// boxes are put there by our own code, a fill by the system takes longer than everything else; what
// GDI+ draws goes through graphics over the same pixels, made when first asked for.
class Canvas {
public:
    Canvas(const PixelView& pixels, const PixelRect& region) : pixels_(pixels), region_(region) {}

    const PixelView& pixels() const noexcept { return pixels_; }
    const PixelRect& region() const noexcept { return region_; }
    Gdiplus::GpGraphics* graphics();

    // Whether anything of the rectangle, with its outline, is in the region.
    bool shows(const PixelRect& rect) const noexcept;
    PixelRect place(const PixelRect& rect) const noexcept;

    // Over what is there, in client pixels. An outline lies about the pixels from left to right and
    // from top to bottom inclusive.
    void put(const PixelImage& picture, int left, int top) const noexcept;
    void fill(const PixelRect& rect, std::uint32_t argb) const noexcept;
    void outline(const PixelRect& rect, std::uint32_t argb) const noexcept;

private:
    PixelView pixels_;
    PixelRect region_;
    Bitmap bitmap_;
    Graphics graphics_;
};

// A bitmap whose pixels are those of the view, which must live longer; null for an empty one.
Bitmap bitmapOver(const PixelView& pixels);
Graphics graphicsOn(Gdiplus::GpBitmap* bitmap);

// The picture turned clockwise about the middle of the rectangle that it fills.
void drawTurned(Gdiplus::GpGraphics* graphics, const PixelImage& picture, const PixelRect& rect,
                double degrees);

struct TextStyle {
    const wchar_t* family = L"Segoe UI";
    Gdiplus::FontStyle style = Gdiplus::FontStyleRegular;
    float sizePixels = 0;
    std::uint32_t argb = 0;
    bool oneLine = false; // cut with an ellipsis instead of wrapped
};

// Centred both ways. A missing font has a stand-in; nothing where that is missing, too.
void drawText(Gdiplus::GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
              const TextStyle& style);

// In client pixels. What has been drawn there before is copied while text and ground stay the same.
void drawCenteredText(Canvas& canvas, std::wstring_view text, const PixelRect& rect,
                      float sizePixels, std::uint32_t argb);

struct BoxColours {
    std::uint32_t fill, edge, text;
};

// A box with its caption, in client pixels.
void drawBox(Canvas& canvas, const PixelRect& rect, std::wstring_view text, float sizePixels,
             const BoxColours& colours);

} // namespace percussomatic
