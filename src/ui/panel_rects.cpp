#include "ui/panel_rects.h"

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
    constexpr int kTop = 12, kBottom = 40;
    rects.info = {64, kTop, 142, kBottom};
    rects.bpm = {442, kTop, 542, kBottom};
    rects.cards = {width - 142, kTop, width - 64, kBottom};
    rects.midi = {width - 232, kTop, width - 154, kBottom};
    rects.effects = {width - 322, kTop, width - 244, kBottom};
}

void placeDialog(PanelRects& rects, int width, int height) noexcept {
    const int dialogWidth = truncated(width * kDialogWidth);
    const int dialogHeight = truncated(height * kDialogHeight);
    const PixelRect dialog =
        box((width - dialogWidth) / 2, (height - dialogHeight) / 2, dialogWidth, dialogHeight);
    rects.dialog = dialog;

    const int middle = dialog.top + dialogHeight / 2;
    rects.previousCard = {dialog.left + 22, middle - 27, dialog.left + 76, middle + 27};
    rects.nextCard = {dialog.right - 76, middle - 27, dialog.right - 22, middle + 27};

    const int buttons = dialog.left + (dialogWidth - 296) / 2;
    rects.title = {buttons, dialog.bottom - 42, buttons + 92, dialog.bottom - 12};
    rects.save = {buttons + 102, dialog.bottom - 42, buttons + 194, dialog.bottom - 12};
    rects.load = {buttons + 204, dialog.bottom - 42, buttons + 296, dialog.bottom - 12};
    rects.cancel = {dialog.right - 104, dialog.top + 10, dialog.right - 16, dialog.top + 38};

    int cardHeight = dialogHeight - 112;
    int cardWidth = dialogWidth - 216;
    if (truncated(cardHeight * kCardAspect) > cardWidth) {
        cardHeight = truncated(cardWidth / kCardAspect);
    } else {
        cardWidth = truncated(cardHeight * kCardAspect);
    }
    rects.dialogCard =
        box(dialog.left + (dialogWidth - cardWidth) / 2, dialog.top + 48, cardWidth, cardHeight);
}

void placeReader(PanelRects& rects, int width, int height, double readerCardY) noexcept {
    rects.reader = {truncated(width * kReaderLeft), 0, truncated(width * kReaderRight),
                    truncated(height * kReaderBottom)};
    const int cardWidth = truncated(rects.reader.width() * kReaderCardWidth);
    rects.readerCard = box(rects.reader.left + (rects.reader.width() - cardWidth) / 2,
                           truncated(readerCardY), cardWidth, truncated(cardWidth / kCardAspect));
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
