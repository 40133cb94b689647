#include "ui/panel_rendering.h"

#include "audio/sound_engine.h"
#include "sequencer/front_panel.h"
#include "sequencer/sequencer.h"
#include "sequencer/system.h"
#include "ui/panel_rects.h"
#include "ui/redraw.h"

#include <cwchar>
#include <string_view>

namespace percussomatic {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

namespace {

constexpr std::uint32_t kBackground = 0xFF0F0F0F;
constexpr std::uint32_t kBoxFill = 0x9B0F1214, kBoxEdge = 0xAFB4B4B4;
constexpr std::uint32_t kBoxText = 0xDCEBEBEB, kBoxTextOn = 0xE687EB9B;
constexpr std::uint32_t kTempoInternal = 0xFFFFFF00, kTempoExternal = 0xFF00FF00;

BackgroundCache& backgroundCache() noexcept {
    static BackgroundCache cache;
    return cache;
}

PixelRect clientRect(HWND window) noexcept {
    RECT client{};
    GetClientRect(window, &client);
    return {client.left, client.top, client.right, client.bottom};
}

PixelRect moved(const PixelRect& rect, const PixelRect& region) noexcept {
    return {rect.left - region.left, rect.top - region.top, rect.right - region.left,
            rect.bottom - region.top};
}

bool overlap(const PixelRect& a, const PixelRect& b) noexcept {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

Graphics graphicsOn(GpBitmap* bitmap) {
    return created<Graphics>(GdipGetImageGraphicsContext, static_cast<GpImage*>(bitmap));
}

// Copies pixels as they are.
void useCopyMode(GpGraphics* graphics) {
    GdipSetCompositingMode(graphics, CompositingModeSourceCopy);
    GdipSetCompositingQuality(graphics, CompositingQualityHighSpeed);
    GdipSetInterpolationMode(graphics, InterpolationModeNearestNeighbor);
    GdipSetPixelOffsetMode(graphics, PixelOffsetModeHalf);
    GdipSetSmoothingMode(graphics, SmoothingModeNone);
}

// Scales pictures over what is there.
void usePictureMode(GpGraphics* graphics) {
    GdipSetCompositingMode(graphics, CompositingModeSourceOver);
    GdipSetInterpolationMode(graphics, InterpolationModeHighQualityBilinear);
    GdipSetPixelOffsetMode(graphics, PixelOffsetModeHighQuality);
}

// How pictures are sampled at their edges: mirrored. Left to itself the filter looks past the edge,
// finds nothing there and leaves a dark seam where two static pictures meet.
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

// Each static picture replaces what lies beneath it, which is quicker than blending; all of them
// are opaque where they overlap. It is scaled at the origin of a bitmap of its own first: scaled in
// place, rounding of far coordinates can lose its first row or column.
void drawStaticPicture(GpGraphics* graphics, const Picture& picture, int left, int top, int width,
                       int height) {
    const Bitmap scaled = newBitmap(width, height);
    if (scaled == nullptr) {
        return;
    }
    const Graphics onScaled = graphicsOn(scaled.get());
    useCopyMode(onScaled.get());
    GdipSetInterpolationMode(onScaled.get(), InterpolationModeHighQualityBilinear);
    GdipSetPixelOffsetMode(onScaled.get(), PixelOffsetModeHighQuality);
    drawPicture(onScaled.get(), picture, {0, 0, width, height}, mirroredEdges());
    GdipDrawImageRectI(graphics, scaled.get(), left, top, width, height);
}

// A knob: its picture turned clockwise about the middle of the rectangle.
void drawTurned(GpGraphics* graphics, const Picture& picture, const PixelRect& rect,
                const ImageAttributes& edges, double value) {
    constexpr double kFullTurnDeg = 300.0;
    const float centreX = static_cast<float>(rect.left + rect.right) * 0.5f;
    const float centreY = static_cast<float>(rect.top + rect.bottom) * 0.5f;
    GraphicsState state = 0;
    GdipSaveGraphics(graphics, &state);
    GdipTranslateWorldTransform(graphics, centreX, centreY, MatrixOrderPrepend);
    GdipRotateWorldTransform(graphics, static_cast<float>(value * kFullTurnDeg),
                             MatrixOrderPrepend);
    GdipTranslateWorldTransform(graphics, -centreX, -centreY, MatrixOrderPrepend);
    drawPicture(graphics, picture, rect, edges);
    GdipRestoreGraphics(graphics, state);
}

void drawControls(GpGraphics* graphics, const PixelRect& region, double scale) {
    const ImageAttributes edges = mirroredEdges();
    const auto rows = controlRows();
    for (int index = 0; index < kControlCount; ++index) {
        if (!isInteractive(rows[static_cast<std::size_t>(index)])) {
            continue;
        }
        const PixelRect rect = controlClientRect(index, scale);
        if (!overlap(rect, region)) {
            continue;
        }
        const Picture* picture = imageFor(index);
        if (picture == nullptr) {
            continue;
        }
        if (const RotaryState* rotary = rotaryState(index); rotary != nullptr) {
            drawTurned(graphics, *picture, moved(rect, region), edges, rotary->value);
        } else {
            drawPicture(graphics, *picture, moved(rect, region), edges);
        }
    }
}

void drawBox(GpGraphics* graphics, const PixelRect& rect, std::wstring_view text, float sizePixels,
             std::uint32_t textColour) {
    GpSolidFill* fill = nullptr;
    if (GdipCreateSolidFill(kBoxFill, &fill) == Ok) {
        GdipFillRectangleI(graphics, Brush(fill).get(), rect.left, rect.top, rect.width(),
                           rect.height());
    }
    if (const Pen pen = created<Pen>(GdipCreatePen1, kBoxEdge, 1.0f, UnitPixel); pen != nullptr) {
        GdipDrawRectangleI(graphics, pen.get(), rect.left, rect.top, rect.width(), rect.height());
    }
    drawCenteredText(graphics, text, rect, sizePixels, textColour);
}

void paintOverlay(GpGraphics* graphics, const PixelRect& region, int clientWidth) {
    const Sequencer& now = sequencer();
    const PanelRects rects = panelRects(clientWidth);
    // Strings cost far more than the test whether they are seen.
    const auto box = [&](const PixelRect& rect, std::wstring_view text, float size,
                         std::uint32_t colour) {
        if (overlap(inflated(rect, kRedrawMargin), region)) {
            drawBox(graphics, moved(rect, region), text, size, colour);
        }
    };
    const bool followsMidi = now.externalSync && now.midiClockSeen && now.midiBpm > 0.0;
    wchar_t tempo[32];
    std::swprintf(tempo, std::size(tempo), L"BPM %.1f", followsMidi ? now.midiBpm : now.bpm);

    box(rects.info, L"INFO", 13, kBoxText);
    box(rects.bpm, tempo, 14, now.externalSync ? kTempoExternal : kTempoInternal);
    box(rects.cards, L"CARDS", 13, kBoxText);
    box(rects.midi, L"MIDI", 13, kBoxText);
    // Asking the engine may wait for a block being rendered: only where it is seen.
    const bool effectOn = overlap(rects.effects, region) && soundEngine().isEffectEnabled();
    box(rects.effects, L"EFFECTS", 13, effectOn ? kBoxTextOn : kBoxText);
}

void redraw(const PixelRect& rect, Repaint when) {
    const HWND window = static_cast<HWND>(mainWindow());
    if (window == nullptr) {
        return;
    }
    const PixelRect area = inflated(rect, kRedrawMargin);
    const RECT dirty{area.left, area.top, area.right, area.bottom};
    RedrawWindow(window, &dirty, nullptr,
                 RDW_INVALIDATE | RDW_NOERASE | (when == Repaint::now ? RDW_UPDATENOW : 0U));
}

double mainScale() noexcept {
    return windowScale(static_cast<HWND>(mainWindow()));
}

} // namespace

double windowScale(HWND window) noexcept {
    const PixelRect client = clientRect(window);
    return viewScale(client.width(), client.height());
}

const Picture* imageFor(int index) noexcept {
    if (index < 0 || index >= kControlCount) {
        return nullptr;
    }
    const ImagePair& pair = imageCache().pairs[static_cast<std::size_t>(index)];
    return pair.alternate != nullptr && controlLit(index) ? pair.alternate : pair.normal;
}

Bitmap newBitmap(int width, int height) {
    return created<Bitmap>(GdipCreateBitmapFromScan0, width, height, 0, PixelFormat32bppPARGB,
                           static_cast<BYTE*>(nullptr));
}

void rebuildBackgroundCache(HWND window) {
    BackgroundCache& cache = backgroundCache();
    releaseBackgroundCache();
    const PixelRect client = clientRect(window);
    if (client.width() <= 0 || client.height() <= 0) {
        return;
    }
    const double scale = windowScale(window);
    ensurePanelImages(scale);
    cache.bitmap = newBitmap(client.width(), client.height());
    if (cache.bitmap == nullptr) {
        return;
    }
    cache.width = client.width();
    cache.height = client.height();

    const Graphics graphics = graphicsOn(cache.bitmap.get());
    useCopyMode(graphics.get());
    GdipGraphicsClear(graphics.get(), kBackground);
    const auto scaled = [scale](int units) { return static_cast<int>(units * scale + 0.5); };
    const auto rows = controlRows();
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const ControlRow& row = rows[index];
        const Picture* picture = imageCache().pairs[index].normal;
        if (row.visible != 0 && !isInteractive(row) && picture != nullptr) {
            drawStaticPicture(graphics.get(), *picture, scaled(row.x), scaled(row.y),
                              scaled(row.width), scaled(row.height));
        }
    }
}

void releaseBackgroundCache() noexcept {
    backgroundCache() = BackgroundCache{};
}

void paintPanel(HWND window) {
    PAINTSTRUCT paint{};
    HDC dc = BeginPaint(window, &paint);
    const PixelRect client = clientRect(window);
    const BackgroundCache& cache = backgroundCache();
    if (cache.bitmap == nullptr || cache.width != client.width() ||
        cache.height != client.height()) {
        rebuildBackgroundCache(window);
    }

    const PixelRect region{paint.rcPaint.left, paint.rcPaint.top, paint.rcPaint.right,
                           paint.rcPaint.bottom};
    if (region.width() >= 1 && region.height() >= 1) {
        const Bitmap screen = newBitmap(region.width(), region.height());
        const Graphics offScreen = screen == nullptr ? nullptr : graphicsOn(screen.get());
        const auto onWindow = created<Graphics>(GdipCreateFromHDC, dc);
        if (offScreen != nullptr && onWindow != nullptr) {
            composePanel(offScreen.get(), region, client.width(), windowScale(window));
            GdipSetCompositingMode(onWindow.get(), CompositingModeSourceCopy);
            GdipDrawImageRectI(onWindow.get(), screen.get(), region.left, region.top,
                               region.width(), region.height());
        }
    }
    EndPaint(window, &paint);
}

void composePanel(GpGraphics* graphics, const PixelRect& region, int clientWidth, double scale) {
    useCopyMode(graphics);
    if (GpBitmap* background = backgroundCache().bitmap.get(); background != nullptr) {
        GdipDrawImageRectRectI(graphics, background, 0, 0, region.width(), region.height(),
                               region.left, region.top, region.width(), region.height(), UnitPixel,
                               nullptr, nullptr, nullptr);
    }
    usePictureMode(graphics);
    drawControls(graphics, region, scale);
    paintOverlay(graphics, region, clientWidth);
}

void drawCenteredText(GpGraphics* graphics, std::wstring_view text, const PixelRect& rect,
                      float sizePixels, std::uint32_t argb) {
    const auto family = created<FontFamily>(GdipCreateFontFamilyFromName, L"Segoe UI",
                                            static_cast<GpFontCollection*>(nullptr));
    if (family == nullptr) {
        return;
    }
    const auto font = created<Font>(GdipCreateFont, family.get(), sizePixels,
                                    static_cast<INT>(FontStyleRegular), UnitPixel);
    const auto format =
        created<StringFormat>(GdipCreateStringFormat, 0, static_cast<LANGID>(LANG_NEUTRAL));
    GpSolidFill* fill = nullptr;
    GdipCreateSolidFill(argb, &fill);
    const Brush brush(fill);
    if (font == nullptr || format == nullptr || brush == nullptr) {
        return;
    }
    GdipSetStringFormatAlign(format.get(), StringAlignmentCenter);
    GdipSetStringFormatLineAlign(format.get(), StringAlignmentCenter);
    const GpRectF layout(static_cast<float>(rect.left), static_cast<float>(rect.top),
                         static_cast<float>(rect.width()), static_cast<float>(rect.height()));
    GdipDrawString(graphics, text.data(), static_cast<INT>(text.size()), font.get(), &layout,
                   format.get(), brush.get());
}

void redrawControl(int index, Repaint when) {
    if (index != kNoControl) {
        redraw(controlClientRect(index, mainScale()), when);
    }
}

void redrawSlider(int index, std::uint32_t oldOffset) {
    const double scale = mainScale();
    redraw(united(controlClientRect(index, scale, oldOffset), controlClientRect(index, scale)),
           Repaint::now);
}

void redrawTempoBox() {
    redraw(panelRects(clientRect(static_cast<HWND>(mainWindow())).width()).bpm, Repaint::now);
}

void flushPainting() {
    if (const HWND window = static_cast<HWND>(mainWindow()); window != nullptr) {
        UpdateWindow(window);
    }
}

} // namespace percussomatic
