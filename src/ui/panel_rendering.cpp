#include "ui/panel_rendering.h"

#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "midi/midi_input.h"
#include "sequencer/front_panel.h"
#include "sequencer/sequencer.h"
#include "ui/card_rendering.h"
#include "ui/drawing.h"

#include <cwchar>

namespace percussomatic {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

namespace {

constexpr std::uint32_t kBackground = 0xFF0F0F0F;
constexpr std::uint32_t kBoxFill = 0x9B0F1214, kBoxEdge = 0xAFB4B4B4;
constexpr std::uint32_t kBoxText = 0xDCEBEBEB, kBoxTextOn = 0xE687EB9B;
constexpr std::uint32_t kTempoInternal = 0xFFFFFF00, kTempoExternal = 0xFF00FF00;

struct BackgroundCache {
    Bitmap bitmap;
    int width = 0, height = 0;
};

BackgroundCache& backgroundCache() noexcept {
    static BackgroundCache cache;
    return cache;
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
    usePictureMode(onScaled.get());
    GdipSetCompositingMode(onScaled.get(), CompositingModeSourceCopy);
    GdipSetCompositingQuality(onScaled.get(), CompositingQualityHighSpeed);
    GdipSetSmoothingMode(onScaled.get(), SmoothingModeNone);
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

void paintControls(const Canvas& canvas, double scale) {
    const ImageAttributes edges = mirroredEdges();
    const auto rows = controlRows();
    for (int index = 0; index < kControlCount; ++index) {
        if (!isInteractive(rows[static_cast<std::size_t>(index)])) {
            continue;
        }
        const PixelRect rect = controlClientRect(index, scale);
        if (!overlap(rect, canvas.region)) {
            continue;
        }
        const Picture* picture = imageFor(index);
        if (picture == nullptr) {
            continue;
        }
        if (const RotaryState* rotary = rotaryState(index); rotary != nullptr) {
            drawTurned(canvas.graphics, *picture, canvas.place(rect), edges, rotary->value);
        } else {
            drawPicture(canvas.graphics, *picture, canvas.place(rect), edges);
        }
    }
}

void paintStrip(const Canvas& canvas, const PanelRects& rects) {
    const Sequencer& now = sequencer();
    // Strings cost far more than the test whether they are seen.
    const auto box = [&](const PixelRect& rect, std::wstring_view text, float size,
                         std::uint32_t colour) {
        if (canvas.shows(rect)) {
            drawBox(canvas.graphics, canvas.place(rect), text, size, {kBoxFill, kBoxEdge, colour});
        }
    };
    const bool followsMidi = now.externalSync && now.midiClockSeen && now.midiBpm > 0.0;
    wchar_t tempo[32];
    std::swprintf(tempo, std::size(tempo), L"BPM %.1f", followsMidi ? now.midiBpm : now.bpm);

    box(rects.info, L"INFO", 13, kBoxText);
    box(rects.bpm, tempo, 14, now.externalSync ? kTempoExternal : kTempoInternal);
    box(rects.cards, L"CARDS", 13, kBoxText);
    const bool portOpen = midiInputContext().input != nullptr;
    box(rects.midi, L"MIDI", 13, portOpen ? kBoxTextOn : kBoxText);
    // Asking the engine may wait for a block being rendered: only where it is seen.
    const bool effectOn = canvas.shows(rects.effects) && soundEngine().isEffectEnabled();
    box(rects.effects, L"EFFECTS", 13, effectOn ? kBoxTextOn : kBoxText);
}

void paintOverlay(const Canvas& canvas, LayoutSize client, double scale) {
    const PanelRects rects = cardPanelRects(client);
    paintStrip(canvas, rects);
    if (cardPanel().cardsDialogOpen) {
        paintCardDialog(canvas, rects);
    }
    if (cardPanel().insertingCard || cardPanel().cardInserted) {
        paintReader(canvas, rects, scale);
    }
}

} // namespace

LayoutSize clientSize(HWND window) noexcept {
    RECT client{};
    GetClientRect(window, &client);
    return {client.right, client.bottom};
}

double windowScale(HWND window) noexcept {
    const LayoutSize client = clientSize(window);
    return viewScale(client.width, client.height);
}

const Picture* imageFor(int index) noexcept {
    if (index < 0 || index >= kControlCount) {
        return nullptr;
    }
    const ImagePair& pair = imageCache().pairs[static_cast<std::size_t>(index)];
    return pair.alternate != nullptr && controlLit(index) ? pair.alternate : pair.normal;
}

void rebuildBackgroundCache(HWND window) {
    BackgroundCache& cache = backgroundCache();
    releaseBackgroundCache();
    const LayoutSize client = clientSize(window);
    if (client.width <= 0 || client.height <= 0) {
        return;
    }
    const double scale = windowScale(window);
    ensurePanelImages(scale);
    cache.bitmap = newBitmap(client.width, client.height);
    if (cache.bitmap == nullptr) {
        return;
    }
    cache.width = client.width;
    cache.height = client.height;

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
    const LayoutSize client = clientSize(window);
    const BackgroundCache& cache = backgroundCache();
    if (cache.bitmap == nullptr || cache.width != client.width || cache.height != client.height) {
        rebuildBackgroundCache(window);
    }

    const PixelRect region{paint.rcPaint.left, paint.rcPaint.top, paint.rcPaint.right,
                           paint.rcPaint.bottom};
    if (region.width() >= 1 && region.height() >= 1) {
        const Bitmap screen = newBitmap(region.width(), region.height());
        const Graphics offScreen = screen == nullptr ? nullptr : graphicsOn(screen.get());
        const auto onWindow = created<Graphics>(GdipCreateFromHDC, dc);
        if (offScreen != nullptr && onWindow != nullptr) {
            composePanel(offScreen.get(), region, client);
            GdipSetCompositingMode(onWindow.get(), CompositingModeSourceCopy);
            GdipDrawImageRectI(onWindow.get(), screen.get(), region.left, region.top,
                               region.width(), region.height());
        }
    }
    EndPaint(window, &paint);
}

void composePanel(GpGraphics* graphics, const PixelRect& region, LayoutSize client) {
    const double scale = viewScale(client.width, client.height);
    const Canvas canvas{graphics, region};
    useCopyMode(graphics);
    if (GpBitmap* background = backgroundCache().bitmap.get(); background != nullptr) {
        GdipDrawImageRectRectI(graphics, background, 0, 0, region.width(), region.height(),
                               region.left, region.top, region.width(), region.height(), UnitPixel,
                               nullptr, nullptr, nullptr);
    }
    usePictureMode(graphics);
    paintControls(canvas, scale);
    paintOverlay(canvas, client, scale);
}

} // namespace percussomatic
