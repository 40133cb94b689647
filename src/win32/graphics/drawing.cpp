// SPDX-License-Identifier: MIT
#include "win32/graphics/drawing.h"

#include "panel/control_geometry.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <vector>

namespace percussomatic {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

namespace {

FontFamily familyNamed(const wchar_t* name) {
    return makeOwned<FontFamily>(GdipCreateFontFamilyFromName, name,
                                 static_cast<GpFontCollection*>(nullptr));
}

// The font that GDI substitutes for a missing one: under Wine, GDI+ substitutes none itself.
const std::wstring& substituteFor(const wchar_t* name) {
    static std::map<std::wstring, std::wstring> substitutes;
    const auto [entry, isNew] = substitutes.try_emplace(name);
    if (isNew) {
        const Owned<HFONT, DeleteObject> font(CreateFontW(
            0, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
            CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_SWISS, name));
        HDC screen = GetDC(nullptr);
        HGDIOBJ oldFont = SelectObject(screen, font.get());
        std::array<wchar_t, LF_FACESIZE> face{};
        GetTextFaceW(screen, static_cast<int>(face.size()), face.data());
        SelectObject(screen, oldFont);
        ReleaseDC(nullptr, screen);
        entry->second = face.data();
    }
    return entry->second;
}

// A drawn string and the background under it. Cached because GDI+ takes longer for a string than
// the rest of its box takes.
struct CachedText {
    PixelRect area;
    std::wstring text;
    TextStyle style;
    PixelImage background, drawn;
};

PixelImage copyOf(const PixelView& view) {
    PixelImage image = blankImage(view.width, view.height);
    for (int y = 0; y < view.height; ++y) {
        std::copy_n(view.row(y), view.width, viewOf(image).row(y));
    }
    return image;
}

bool samePixels(const PixelView& view, PixelImage& image) {
    bool same = image.width == view.width && image.height == view.height;
    for (int y = 0; same && y < view.height; ++y) {
        same = std::equal(view.row(y), view.row(y) + view.width, viewOf(image).row(y));
    }
    return same;
}

} // namespace

GpGraphics* Canvas::graphics() {
    if (graphics_ == nullptr) {
        bitmap_ = bitmapOver(pixels_);
        graphics_ = graphicsOn(bitmap_.get());
    }
    return graphics_.get();
}

bool Canvas::intersects(const PixelRect& rect) const noexcept {
    return overlap(inflated(rect, kRedrawMargin), region_);
}

PixelRect Canvas::toLocal(const PixelRect& rect) const noexcept {
    return {rect.left - region_.left, rect.top - region_.top, rect.right - region_.left,
            rect.bottom - region_.top};
}

void Canvas::draw(const PixelImage& picture, int left, int top) const noexcept {
    blendPixels(picture, left - region_.left, top - region_.top, pixels_);
}

void Canvas::fill(const PixelRect& rect, std::uint32_t argb) const noexcept {
    fillPixels(toLocal(rect), argb, pixels_);
}

void Canvas::outline(const PixelRect& rect, std::uint32_t argb) const noexcept {
    fill({rect.left, rect.top, rect.right + 1, rect.top + 1}, argb);
    fill({rect.left, rect.bottom, rect.right + 1, rect.bottom + 1}, argb);
    fill({rect.left, rect.top + 1, rect.left + 1, rect.bottom}, argb);
    fill({rect.right, rect.top + 1, rect.right + 1, rect.bottom}, argb);
}

Bitmap bitmapOver(const PixelView& pixels) {
    if (pixels.width <= 0 || pixels.height <= 0) {
        return {};
    }
    return makeOwned<Bitmap>(GdipCreateBitmapFromScan0, pixels.width, pixels.height,
                             static_cast<INT>(pixels.stride) * 4, PixelFormat32bppPARGB,
                             reinterpret_cast<BYTE*>(pixels.pixels));
}

Graphics graphicsOn(GpBitmap* bitmap) {
    return makeOwned<Graphics>(GdipGetImageGraphicsContext, static_cast<GpImage*>(bitmap));
}

void drawRotated(GpGraphics* graphics, const PixelImage& picture, const PixelRect& rect,
                 double degrees) {
    // GDI+ only reads the pixels, although its parameter is not const.
    const PixelView pixels{const_cast<std::uint32_t*>(picture.pixels.data()), picture.width,
                           picture.height, picture.width};
    const Bitmap bitmap = bitmapOver(pixels);
    if (bitmap == nullptr) {
        return;
    }
    // By default the filter blends the picture's edge with transparent pixels outside it.
    const auto edges = makeOwned<ImageAttributes>(GdipCreateImageAttributes);
    GdipSetImageAttributesWrapMode(edges.get(), WrapModeTileFlipXY, 0, FALSE);

    const float centreX = static_cast<float>(rect.left + rect.right) * 0.5f;
    const float centreY = static_cast<float>(rect.top + rect.bottom) * 0.5f;
    GraphicsState state = 0;
    GdipSaveGraphics(graphics, &state);
    GdipSetInterpolationMode(graphics, InterpolationModeHighQualityBilinear);
    GdipSetPixelOffsetMode(graphics, PixelOffsetModeHighQuality);
    GdipTranslateWorldTransform(graphics, centreX, centreY, MatrixOrderPrepend);
    GdipRotateWorldTransform(graphics, static_cast<float>(degrees), MatrixOrderPrepend);
    GdipTranslateWorldTransform(graphics, -centreX, -centreY, MatrixOrderPrepend);
    GdipDrawImageRectRectI(graphics, bitmap.get(), rect.left, rect.top, rect.width(), rect.height(),
                           0, 0, picture.width, picture.height, UnitPixel, edges.get(), nullptr,
                           nullptr);
    GdipRestoreGraphics(graphics, state);
    GdipFlush(graphics, FlushIntentionSync); // our own code writes to the same memory next
}

void drawText(GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
              const TextStyle& style) {
    FontFamily family = familyNamed(style.family);
    if (family == nullptr) {
        family = familyNamed(L"DejaVu Sans"); // usual on Linux; has the arrows
    }
    if (family == nullptr) {
        family = familyNamed(substituteFor(style.family).c_str());
    }
    if (family == nullptr) {
        return;
    }
    const auto font = makeOwned<Font>(GdipCreateFont, family.get(), style.sizePixels,
                                      static_cast<INT>(style.style), UnitPixel);
    const auto format = makeOwned<StringFormat>(
        GdipCreateStringFormat, style.singleLine ? static_cast<INT>(StringFormatFlagsNoWrap) : 0,
        static_cast<LANGID>(LANG_NEUTRAL));
    GpSolidFill* fill = nullptr;
    GdipCreateSolidFill(style.argb, &fill);
    const Brush brush(fill);
    if (font == nullptr || format == nullptr || brush == nullptr) {
        return;
    }
    GdipSetStringFormatAlign(format.get(), StringAlignmentCenter);
    GdipSetStringFormatLineAlign(format.get(), StringAlignmentCenter);
    if (style.singleLine) {
        GdipSetStringFormatTrimming(format.get(), StringTrimmingEllipsisCharacter);
    }
    const GpRectF layout(static_cast<float>(rect.left), static_cast<float>(rect.top),
                         static_cast<float>(rect.width()), static_cast<float>(rect.height()));
    GdipDrawString(graphics, text.data(), static_cast<INT>(text.size()), font.get(), &layout,
                   format.get(), brush.get());
}

void drawCenteredText(Canvas& canvas, std::wstring_view text, const PixelRect& rect,
                      const TextStyle& style) {
    constexpr std::size_t kMaxTexts = 32; // enough for two sizes of the window
    static std::vector<CachedText> texts; // at most one per place
    const auto draw = [&] {
        drawText(canvas.graphics(), text, canvas.toLocal(rect), style);
        GdipFlush(canvas.graphics(), FlushIntentionSync);
    };
    const PixelRect area = inflated(rect, kRedrawMargin);
    if (intersected(area, canvas.region()) != area) {
        draw();
        return;
    }
    const PixelView view = canvas.pixels().part(canvas.toLocal(area));
    auto cached = std::ranges::find(texts, area, &CachedText::area);
    if (cached != texts.end() && cached->text == text && cached->style == style &&
        samePixels(view, cached->background)) {
        copyPixels(cached->drawn, 0, 0, view);
        return;
    }
    if (cached == texts.end()) {
        if (texts.size() == kMaxTexts) {
            texts.clear();
        }
        cached = texts.emplace(texts.end());
    }
    PixelImage background = copyOf(view);
    draw();
    *cached = {area, std::wstring(text), style, std::move(background), copyOf(view)};
}

void drawBox(Canvas& canvas, const PixelRect& rect, std::wstring_view text, float sizePixels,
             const BoxColours& colours) {
    canvas.fill(rect, colours.fill);
    canvas.outline(rect, colours.edge);
    drawCenteredText(canvas, text, rect,
                     {.sizePixels = sizePixels, .argb = colours.text, .singleLine = true});
}

} // namespace percussomatic
