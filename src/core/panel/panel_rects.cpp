// SPDX-License-Identifier: MIT
#include "panel/panel_rects.h"

#include "panel/card_layout.h"
#include "panel/display_scale.h"

#include <algorithm>

namespace percussomatic {

namespace {

// Fractions of the client area's width and height.
constexpr double kDialogWidth = 0.72, kDialogHeight = 0.86;
constexpr double kReaderLeft = 0.785, kReaderRight = 0.945, kReaderBottom = 0.91;
constexpr double kReaderCardWidth = 0.58; // fraction of the reader's width

constexpr int kStripWidth = 864; // design pixels: below, BPM and EFFECTS would overlap
constexpr int kMinStripDpi = 67; // the texts of 13 design pixels are 9 pixels high

PixelRect box(int left, int top, int width, int height) noexcept {
    return {left, top, left + width, top + height};
}

int truncated(double value) noexcept {
    return static_cast<int>(value);
}

// INFO and BPM keep their distance from the left edge, the others theirs from the right one. False
// if BPM and EFFECTS overlap, because the window is too narrow.
bool placeStripAtEdges(PanelRects& rects, int width) noexcept {
    const auto px = [&rects](int value) { return scaledForDpi(value, rects.stripDpi); };
    const int top = px(12), bottom = px(40);
    const auto fromRight = [=](int left, int right) {
        return PixelRect{width - px(left), top, width - px(right), bottom};
    };
    rects.info = {px(64), top, px(142), bottom};
    rects.bpm = {px(442), top, px(542), bottom};
    rects.cards = fromRight(142, 64);
    rects.midi = fromRight(232, 154);
    rects.effects = fromRight(322, 244);
    return rects.bpm.right <= rects.effects.left;
}

// Shrinks the gaps in proportion, if only by a pixel lost to rounding. Once they are gone, the
// boxes shrink, too, and their texts are cut.
void squeezeStrip(PanelRects& rects, int width) noexcept {
    constexpr struct {
        PixelRect PanelRects::*rect;
        int gap, width; // the gap is to the left
    } kBoxes[] = {{&PanelRects::info, 64, 78},
                  {&PanelRects::bpm, 300, 100},
                  {&PanelRects::effects, 0, 78},
                  {&PanelRects::midi, 12, 78},
                  {&PanelRects::cards, 12, 78}};
    constexpr int kAllBoxes = 4 * 78 + 100;
    const double boxScale = std::min(static_cast<double>(rects.stripDpi) / kDesignDpi,
                                     static_cast<double>(width) / kAllBoxes);
    const double gapScale = (width - boxScale * kAllBoxes) / (kStripWidth - kAllBoxes);
    double x = 0.0;
    for (const auto& each : kBoxes) {
        PixelRect& rect = rects.*each.rect;
        x += each.gap * gapScale;
        rect.left = truncated(x);
        x += each.width * boxScale;
        rect.right = truncated(x);
    }
}

void placeStrip(PanelRects& rects, int width) noexcept {
    rects.stripDpi =
        std::max(kMinStripDpi, std::min(displayDpi(), width * kDesignDpi / kStripWidth));
    if (!placeStripAtEdges(rects, width)) {
        squeezeStrip(rects, width);
    }
}

void placeDialog(PanelRects& rects, int width, int height) noexcept {
    const int dialogWidth = truncated(width * kDialogWidth);
    const int dialogHeight = truncated(height * kDialogHeight);
    const PixelRect dialog =
        box((width - dialogWidth) / 2, (height - dialogHeight) / 2, dialogWidth, dialogHeight);
    rects.dialog = dialog;

    const int middle = dialog.top + dialogHeight / 2;
    const int near = scaledForDpi(22), far = scaledForDpi(76), half = scaledForDpi(27);
    rects.previousCard = {dialog.left + near, middle - half, dialog.left + far, middle + half};
    rects.nextCard = {dialog.right - far, middle - half, dialog.right - near, middle + half};

    const int buttons = dialog.left + (dialogWidth - scaledForDpi(296)) / 2;
    const auto button = [=](int left, int right) {
        return PixelRect{buttons + scaledForDpi(left), dialog.bottom - scaledForDpi(42),
                         buttons + scaledForDpi(right), dialog.bottom - scaledForDpi(12)};
    };
    rects.title = button(0, 92);
    rects.save = button(102, 194);
    rects.load = button(204, 296);
    rects.cancel = {dialog.right - scaledForDpi(104), dialog.top + scaledForDpi(10),
                    dialog.right - scaledForDpi(16), dialog.top + scaledForDpi(38)};

    int cardHeight = dialogHeight - scaledForDpi(112);
    int cardWidth = dialogWidth - scaledForDpi(216);
    if (truncated(cardHeight * card_layout::kAspect) > cardWidth) {
        cardHeight = truncated(cardWidth / card_layout::kAspect);
    } else {
        cardWidth = truncated(cardHeight * card_layout::kAspect);
    }
    rects.dialogCard = box(dialog.left + (dialogWidth - cardWidth) / 2,
                           dialog.top + scaledForDpi(48), cardWidth, cardHeight);
}

void placeReader(PanelRects& rects, int width, int height, double readerCardY) noexcept {
    rects.reader = {truncated(width * kReaderLeft), 0, truncated(width * kReaderRight),
                    truncated(height * kReaderBottom)};
    const int cardWidth = truncated(rects.reader.width() * kReaderCardWidth);
    rects.readerCard =
        box(rects.reader.left + (rects.reader.width() - cardWidth) / 2, truncated(readerCardY),
            cardWidth, truncated(cardWidth / card_layout::kAspect));
}

} // namespace

PanelRects panelRects(int clientWidth, int clientHeight, double readerCardY) noexcept {
    PanelRects rects;
    placeStrip(rects, clientWidth);
    placeDialog(rects, clientWidth, clientHeight);
    placeReader(rects, clientWidth, clientHeight, readerCardY);
    return rects;
}

} // namespace percussomatic
