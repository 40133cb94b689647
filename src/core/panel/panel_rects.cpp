// SPDX-License-Identifier: MIT
#include "panel/panel_rects.h"

#include "panel/card_layout.h"
#include "panel/display_scale.h"

namespace percussomatic {

namespace {

// Fractions of the client area's width and height.
constexpr double kDialogWidth = 0.72, kDialogHeight = 0.86;
constexpr double kReaderLeft = 0.785, kReaderRight = 0.945, kReaderBottom = 0.91;
constexpr double kReaderCardWidth = 0.58; // fraction of the reader's width

PixelRect box(int left, int top, int width, int height) noexcept {
    return {left, top, left + width, top + height};
}

int truncated(double value) noexcept {
    return static_cast<int>(value);
}

void placeStrip(PanelRects& rects, int width) noexcept {
    const int top = scaledForDpi(12), bottom = scaledForDpi(40);
    const auto fromRight = [=](int left, int right) {
        return PixelRect{width - scaledForDpi(left), top, width - scaledForDpi(right), bottom};
    };
    rects.info = {scaledForDpi(64), top, scaledForDpi(142), bottom};
    rects.bpm = {scaledForDpi(442), top, scaledForDpi(542), bottom};
    rects.cards = fromRight(142, 64);
    rects.midi = fromRight(232, 154);
    rects.effects = fromRight(322, 244);
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
