// SPDX-License-Identifier: MIT
#include "win32/view/panel_rendering.h"

#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "graphics/scaled_pictures.h"
#include "panel/control_geometry.h"
#include "panel/control_state.h"
#include "panel/display_scale.h"
#include "panel/panel_state.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"
#include "win32/graphics/drawing.h"
#include "win32/graphics/images.h"
#include "win32/graphics/screen_pixels.h"
#include "win32/midi/midi_input.h"
#include "win32/view/card_rendering.h"

#include <algorithm>
#include <cwchar>
#include <thread>
#include <vector>

namespace percussomatic {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

namespace {

constexpr std::uint32_t kBackground = 0xFF0F0F0F;
constexpr std::uint32_t kBoxFill = 0x9B0F1214, kBoxEdge = 0xAFB4B4B4;
constexpr std::uint32_t kBoxText = 0xDCEBEBEB, kBoxTextOn = 0xE687EB9B;
constexpr std::uint32_t kTempoInternal = 0xFFFFFF00, kTempoExternal = 0xFF00FF00;

// The static pictures at the current client size.
PixelImage& backgroundCache() noexcept {
    static PixelImage cache;
    return cache;
}

// The parts of the rectangles outside `cover`.
std::vector<PixelRect> subtracted(const std::vector<PixelRect>& rects, const PixelRect& cover) {
    std::vector<PixelRect> parts;
    for (const PixelRect& rect : rects) {
        const int top = std::clamp(cover.top, rect.top, rect.bottom);
        const int bottom = std::clamp(cover.bottom, rect.top, rect.bottom);
        const int left = std::clamp(cover.left, rect.left, rect.right);
        const int right = std::clamp(cover.right, rect.left, rect.right);
        for (const PixelRect& part :
             {PixelRect{rect.left, rect.top, rect.right, top},
              PixelRect{rect.left, top, left, bottom}, PixelRect{right, top, rect.right, bottom},
              PixelRect{rect.left, bottom, rect.right, rect.bottom}}) {
            if (part.width() > 0 && part.height() > 0) {
                parts.push_back(part);
            }
        }
    }
    return parts;
}

struct StaticPicture {
    const PixelImage* picture; // null for the plain background
    PixelRect rect;
};

// Bottom to top. Each replaces the pixels under it, even where it is transparent.
std::vector<StaticPicture> staticPictures(const PixelImage& cache, double scale) {
    std::vector<StaticPicture> layers{{nullptr, {0, 0, cache.width, cache.height}}};
    const auto inPixels = [scale](int units) { return static_cast<int>(units * scale + 0.5); };
    const auto rows = controlRows();
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const ControlRow& row = rows[index];
        const PixelImage* picture = imageCache().pairs[index].normal;
        if (row.visible != 0 && !isInteractive(row) && picture != nullptr) {
            const int left = inPixels(row.x), top = inPixels(row.y);
            layers.push_back(
                {picture, {left, top, left + inPixels(row.width), top + inPixels(row.height)}});
        }
    }
    return layers;
}

// Draws the pictures within `area`, leaving out what later ones cover.
void drawStaticPictures(const std::vector<StaticPicture>& layers, PixelImage& cache,
                        const PixelRect& area) {
    for (auto layer = layers.begin(); layer != layers.end(); ++layer) {
        std::vector<PixelRect> parts{intersected(layer->rect, area)};
        for (auto cover = layer + 1; cover != layers.end(); ++cover) {
            parts = subtracted(parts, cover->rect);
        }
        for (const PixelRect& part : parts) {
            const PixelView view = viewOf(cache).part(part);
            if (layer->picture == nullptr) {
                fillPixels({0, 0, view.width, view.height}, kBackground, view);
            } else {
                copyScaled(*layer->picture,
                           {layer->rect.left - part.left, layer->rect.top - part.top,
                            layer->rect.right - part.left, layer->rect.bottom - part.top},
                           view);
            }
        }
    }
}

// Rotates the dial from a copy of twice the size shown, because the filter of GDI+ would otherwise
// leave jagged edges.
void paintRotary(Canvas& canvas, const PixelImage& picture, const PixelRect& rect, double value) {
    constexpr double kSweepDeg = 300.0;
    const PixelImage& dial = cachedScaled(picture, std::min(picture.width, 2 * rect.width()),
                                          std::min(picture.height, 2 * rect.height()));
    drawRotated(canvas.graphics(), dial, canvas.toLocal(rect), value * kSweepDeg);
}

// The area that the opaque card dialog covers; empty while it is closed.
PixelRect coveredArea(Size client) noexcept {
    return cardPanel().cardsDialogOpen ? cardPanelRects(client).dialog : PixelRect{};
}

void paintControls(Canvas& canvas, double scale, const PixelRect& covered) {
    for (int index = 0; index < kControlCount; ++index) {
        if (!isInteractive(controlRow(index))) {
            continue;
        }
        const PixelRect rect = controlClientRect(index, scale);
        const PixelRect bounds = inflated(rect, rect.width() / 4); // of a rotated dial, too
        if (!overlap(rect, canvas.region()) || intersected(bounds, covered) == bounds) {
            continue;
        }
        const PixelImage* picture = imageFor(index);
        if (picture == nullptr) {
            continue;
        }
        if (const RotaryState* rotary = rotaryState(index); rotary != nullptr) {
            paintRotary(canvas, *picture, rect, rotary->value);
        } else {
            canvas.draw(cachedScaled(*picture, rect.width(), rect.height()), rect.left, rect.top);
        }
    }
}

void paintStrip(Canvas& canvas, const PanelRects& rects) {
    const Sequencer& now = sequencer();
    const auto box = [&](const PixelRect& rect, std::wstring_view text, float size,
                         std::uint32_t colour) {
        if (canvas.intersects(rect)) {
            drawBox(canvas, rect, text, scaledForDpi(size, rects.stripDpi),
                    {kBoxFill, kBoxEdge, colour});
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
    // The engine is asked only if the box is repainted, because the call may wait for a block that
    // is being rendered.
    const bool effectOn = canvas.intersects(rects.effects) && soundEngine().isEffectEnabled();
    box(rects.effects, L"EFFECTS", 13, effectOn ? kBoxTextOn : kBoxText);
}

void paintOverlay(Canvas& canvas, Size client, double scale) {
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

Size clientSize(HWND window) noexcept {
    RECT client{};
    GetClientRect(window, &client);
    return {client.right, client.bottom};
}

double windowScale(HWND window) noexcept {
    const Size client = clientSize(window);
    return viewScale(client);
}

const PixelImage* imageFor(int index) noexcept {
    if (index < 0 || index >= kControlCount) {
        return nullptr;
    }
    const ImagePair& pair = imageCache().pair(index);
    return pair.alternate != nullptr && controlLit(index) ? pair.alternate : pair.normal;
}

void rebuildBackgroundCache(HWND window) {
    PixelImage& cache = backgroundCache();
    clearScaledPictures();
    const Size client = clientSize(window); // never negative
    cache.width = client.width;
    cache.height = client.height;
    // Keeps the allocation, because touching fresh memory takes longer than filling it.
    cache.pixels.resize(static_cast<std::size_t>(cache.width * cache.height));
    if (client.width <= 0 || client.height <= 0) {
        return;
    }
    const double scale = windowScale(window);
    ensurePanelImages(scale);
    const std::vector<StaticPicture> layers = staticPictures(cache, scale);
    const int middle = cache.height / 2;
    std::jthread lower([&] {
        drawStaticPictures(layers, cache, {0, middle, cache.width, cache.height});
    });
    drawStaticPictures(layers, cache, {0, 0, cache.width, middle});
}

bool backgroundFits(Size client) noexcept {
    return backgroundCache().width == client.width && backgroundCache().height == client.height;
}

void releaseBackgroundCache() noexcept {
    backgroundCache() = {};
    screenPixels().release();
    clearScaledPictures();
}

void paintPanel(HWND window) {
    std::vector<PixelRect> regions = invalidRects(window);
    PAINTSTRUCT paint{};
    HDC dc = BeginPaint(window, &paint);
    if (const PixelRect all = pixelRect(paint.rcPaint);
        boundsOf(regions) != united(boundsOf(regions), all)) {
        regions = {all}; // the update region has grown between the two calls
    }
    const Size client = clientSize(window);
    if (!backgroundFits(client)) {
        rebuildBackgroundCache(window);
    }
    if (ScreenPixels& screen = screenPixels(); screen.fit(client)) {
        for (const PixelRect& each : regions) {
            const PixelRect region = intersected(each, {0, 0, client.width, client.height});
            if (region.width() <= 0) {
                continue;
            }
            composePanel(screen.view().part(region), region, client);
            BitBlt(dc, region.left, region.top, region.width(), region.height(), screen.dc(),
                   region.left, region.top, SRCCOPY);
        }
        GdiFlush(); // the next paint writes to the bitmap directly
    }
    EndPaint(window, &paint);
}

void composePanel(const PixelView& pixels, const PixelRect& region, Size client) {
    const double scale = viewScale(client);
    Canvas canvas(pixels, region);
    const PixelRect covered = coveredArea(client);
    for (const PixelRect& part : subtracted({region}, covered)) {
        copyPixels(backgroundCache(), -part.left, -part.top, pixels.part(canvas.toLocal(part)));
    }
    paintControls(canvas, scale, covered);
    paintOverlay(canvas, client, scale);
}

} // namespace percussomatic
