#pragma once

#include "ui/control_layout.h"
#include "ui/gdiplus_flat.h"
#include "ui/images.h"

#include <cstdint>
#include <string_view>

namespace percussomatic {

// The few strokes that the panel is drawn with. Client pixels; colours are 0xAARRGGBB. GUI thread.

bool overlap(const PixelRect& a, const PixelRect& b) noexcept;

// Part of the client area being painted, in graphics whose origin is its corner.
struct Canvas {
    Gdiplus::GpGraphics* graphics;
    const PixelRect& region;

    // Whether anything of the rectangle, with its outline, is in the region.
    bool shows(const PixelRect& rect) const noexcept;
    PixelRect place(const PixelRect& rect) const noexcept;
};

// A bitmap of 32-bit premultiplied pixels, and graphics that draw on one.
Bitmap newBitmap(int width, int height);
Graphics graphicsOn(Gdiplus::GpBitmap* bitmap);

void useCopyMode(Gdiplus::GpGraphics* graphics);    // copies pixels as they are
void usePictureMode(Gdiplus::GpGraphics* graphics); // scales pictures over what is there

// How pictures are sampled at their edges: mirrored. Left to itself the filter looks past the edge,
// finds nothing there and leaves a dark seam where two pictures meet.
ImageAttributes mirroredEdges();

void drawPicture(Gdiplus::GpGraphics* graphics, const Picture& picture, const PixelRect& rect,
                 const ImageAttributes& edges);

void fillBox(Gdiplus::GpGraphics* graphics, const PixelRect& rect, std::uint32_t argb);
void outlineBox(Gdiplus::GpGraphics* graphics, const PixelRect& rect, std::uint32_t argb);

struct TextStyle {
    const wchar_t* family = L"Segoe UI";
    Gdiplus::FontStyle style = Gdiplus::FontStyleRegular;
    float sizePixels = 0;
    std::uint32_t argb = 0;
    bool oneLine = false; // cut with an ellipsis instead of wrapped
};

// Centred both ways. Nothing where the font is missing.
void drawText(Gdiplus::GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
              const TextStyle& style);
void drawCenteredText(Gdiplus::GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
                      float sizePixels, std::uint32_t argb);

struct BoxColours {
    std::uint32_t fill, edge, text;
};

// A box with its caption.
void drawBox(Gdiplus::GpGraphics* graphics, const PixelRect& rect, std::wstring_view text,
             float sizePixels, const BoxColours& colours);

} // namespace percussomatic
