// SPDX-License-Identifier: MIT
#include "panel/panel_rects.h"

#include "panel/card_layout.h"
#include "panel/display_scale.h"

namespace percussomatic {

namespace {

// Part of the client area that the dialog and the reader take.
constexpr double kDialogWidth = 0.72, kDialogHeight = 0.86;
constexpr double kReaderLeft = 0.785, kReaderRight = 0.945, kReaderBottom = 0.91;
constexpr double kReaderCardWidth = 0.58; // of the reader

PixelRect box(int left, int top, int width, int height) noexcept {
    return {left, top, left + width, top + height};
}

int truncated(double value) noexcept {
    return static_cast<int>(value);
}

void placeStrip(PanelRects& rects, int width) noexcept {
    const int top = onScreen(12), bottom = onScreen(40);
    const auto fromRight = [=](int left, int right) {
        return PixelRect{width - onScreen(left), top, width - onScreen(right), bottom};
    };
    rects.info = {onScreen(64), top, onScreen(142), bottom};
    rects.bpm = {onScreen(442), top, onScreen(542), bottom};
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
    const int near = onScreen(22), far = onScreen(76), half = onScreen(27);
    rects.previousCard = {dialog.left + near, middle - half, dialog.left + far, middle + half};
    rects.nextCard = {dialog.right - far, middle - half, dialog.right - near, middle + half};

    const int buttons = dialog.left + (dialogWidth - onScreen(296)) / 2;
    const auto button = [=](int left, int right) {
        return PixelRect{buttons + onScreen(left), dialog.bottom - onScreen(42),
                         buttons + onScreen(right), dialog.bottom - onScreen(12)};
    };
    rects.title = button(0, 92);
    rects.save = button(102, 194);
    rects.load = button(204, 296);
    rects.cancel = {dialog.right - onScreen(104), dialog.top + onScreen(10),
                    dialog.right - onScreen(16), dialog.top + onScreen(38)};

    int cardHeight = dialogHeight - onScreen(112);
    int cardWidth = dialogWidth - onScreen(216);
    if (truncated(cardHeight * card_layout::kAspect) > cardWidth) {
        cardHeight = truncated(cardWidth / card_layout::kAspect);
    } else {
        cardWidth = truncated(cardHeight * card_layout::kAspect);
    }
    rects.dialogCard = box(dialog.left + (dialogWidth - cardWidth) / 2, dialog.top + onScreen(48),
                           cardWidth, cardHeight);
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
