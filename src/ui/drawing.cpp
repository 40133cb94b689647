#include "ui/drawing.h"

namespace percussomatic {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

bool overlap(const PixelRect& a, const PixelRect& b) noexcept {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

bool Canvas::shows(const PixelRect& rect) const noexcept {
    return overlap(inflated(rect, kRedrawMargin), region);
}

PixelRect Canvas::place(const PixelRect& rect) const noexcept {
    return {rect.left - region.left, rect.top - region.top, rect.right - region.left,
            rect.bottom - region.top};
}

Bitmap newBitmap(int width, int height) {
    return created<Bitmap>(GdipCreateBitmapFromScan0, width, height, 0, PixelFormat32bppPARGB,
                           static_cast<BYTE*>(nullptr));
}

Graphics graphicsOn(GpBitmap* bitmap) {
    return created<Graphics>(GdipGetImageGraphicsContext, static_cast<GpImage*>(bitmap));
}

void useCopyMode(GpGraphics* graphics) {
    GdipSetCompositingMode(graphics, CompositingModeSourceCopy);
    GdipSetCompositingQuality(graphics, CompositingQualityHighSpeed);
    GdipSetInterpolationMode(graphics, InterpolationModeNearestNeighbor);
    GdipSetPixelOffsetMode(graphics, PixelOffsetModeHalf);
    GdipSetSmoothingMode(graphics, SmoothingModeNone);
}

void usePictureMode(GpGraphics* graphics) {
    GdipSetCompositingMode(graphics, CompositingModeSourceOver);
    GdipSetInterpolationMode(graphics, InterpolationModeHighQualityBilinear);
    GdipSetPixelOffsetMode(graphics, PixelOffsetModeHighQuality);
}

ImageAttributes mirroredEdges() {
    auto attributes = created<ImageAttributes>(GdipCreateImageAttributes);
    GdipSetImageAttributesWrapMode(attributes.get(), WrapModeTileFlipXY, 0, FALSE);
    return attributes;
}

void drawPicture(GpGraphics* graphics, const Picture& picture, const PixelRect& rect,
                 const ImageAttributes& edges) {
    GdipDrawImageRectRectI(graphics, picture.bitmap.get(), rect.left, rect.top, rect.width(),
                           rect.height(), 0, 0, picture.image.width, picture.image.height,
                           UnitPixel, edges.get(), nullptr, nullptr);
}

void fillBox(GpGraphics* graphics, const PixelRect& rect, std::uint32_t argb) {
    GpSolidFill* fill = nullptr;
    if (GdipCreateSolidFill(argb, &fill) == Ok) {
        GdipFillRectangleI(graphics, Brush(fill).get(), rect.left, rect.top, rect.width(),
                           rect.height());
    }
}

void outlineBox(GpGraphics* graphics, const PixelRect& rect, std::uint32_t argb) {
    if (const Pen pen = created<Pen>(GdipCreatePen1, argb, 1.0f, UnitPixel); pen != nullptr) {
        GdipDrawRectangleI(graphics, pen.get(), rect.left, rect.top, rect.width(), rect.height());
    }
}

void drawText(GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
              const TextStyle& style) {
    const auto family = created<FontFamily>(GdipCreateFontFamilyFromName, style.family,
                                            static_cast<GpFontCollection*>(nullptr));
    if (family == nullptr) {
        return;
    }
    const auto font = created<Font>(GdipCreateFont, family.get(), style.sizePixels,
                                    static_cast<INT>(style.style), UnitPixel);
    const auto format = created<StringFormat>(
        GdipCreateStringFormat, style.oneLine ? static_cast<INT>(StringFormatFlagsNoWrap) : 0,
        static_cast<LANGID>(LANG_NEUTRAL));
    GpSolidFill* fill = nullptr;
    GdipCreateSolidFill(style.argb, &fill);
    const Brush brush(fill);
    if (font == nullptr || format == nullptr || brush == nullptr) {
        return;
    }
    GdipSetStringFormatAlign(format.get(), StringAlignmentCenter);
    GdipSetStringFormatLineAlign(format.get(), StringAlignmentCenter);
    if (style.oneLine) {
        GdipSetStringFormatTrimming(format.get(), StringTrimmingEllipsisCharacter);
    }
    const GpRectF layout(static_cast<float>(rect.left), static_cast<float>(rect.top),
                         static_cast<float>(rect.width()), static_cast<float>(rect.height()));
    GdipDrawString(graphics, text.data(), static_cast<INT>(text.size()), font.get(), &layout,
                   format.get(), brush.get());
}

void drawCenteredText(GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
                      float sizePixels, std::uint32_t argb) {
    drawText(graphics, text, rect, {.sizePixels = sizePixels, .argb = argb});
}

void drawBox(GpGraphics* graphics, const PixelRect& rect, std::wstring_view text, float sizePixels,
             const BoxColours& colours) {
    fillBox(graphics, rect, colours.fill);
    outlineBox(graphics, rect, colours.edge);
    drawCenteredText(graphics, text, rect, sizePixels, colours.text);
}

} // namespace percussomatic
