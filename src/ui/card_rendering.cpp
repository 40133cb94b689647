#include "ui/card_rendering.h"

#include "cards/card_panel.h"

#include <string>

namespace percussomatic {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

namespace {

constexpr std::uint32_t kShadow = 0xBE000000;
constexpr std::uint32_t kDialogFill = 0xFF5C6C6E, kDialogEdge = 0xFF232D2F,
                        kDialogText = 0xFFF4E2B8;
constexpr std::uint32_t kButtonFill = 0xDC2A2E32, kButtonEdge = 0xDCA5A5A5;
constexpr std::uint32_t kButtonText = 0xFFF5F5F5, kButtonTextOff = 0x96828282;
constexpr std::uint32_t kCancelText = 0xFFEBEBEB, kCardTitle = 0xFFD21212;

// What is printed on a card, in the card's own units.
constexpr double kCardWidth = 1149.0, kCardHeight = 3304.0;

PixelRect shadowOf(const PixelRect& dialog) noexcept {
    constexpr int kOffset = 6;
    return {dialog.left + kOffset, dialog.top + kOffset, dialog.right + kOffset,
            dialog.bottom + kOffset};
}

void drawCardTitle(GpGraphics* graphics, const PixelRect& rect, std::wstring_view title) {
    constexpr double kSideMargin = 0.07; // of the card's width
    constexpr double kTop = 38.0, kBottom = 205.0;
    const double width = rect.width();
    const double unitY = rect.height() / kCardHeight;
    const int margin = static_cast<int>(kSideMargin * width);
    const int top = rect.top + static_cast<int>(kTop * unitY);
    const int height = static_cast<int>(kBottom * unitY) - static_cast<int>(kTop * unitY);
    drawText(graphics, title, {rect.left + margin, top, rect.right - margin, top + height},
             {.family = L"Consolas",
              .style = FontStyleBold,
              .sizePixels = static_cast<float>(width * 0.075 + 2.0),
              .argb = kCardTitle,
              .oneLine = true});
}

// Lines run from left to right; the first step is at the foot of the card, which enters first.
void drawHoles(GpGraphics* graphics, const PixelRect& rect, const Pattern& pattern) {
    constexpr double kHole = 56.0;
    constexpr int kFirstX = 456, kLinePitch = 107, kFirstY = 3078, kStepPitch = 154;
    const Picture* hole = imageCache().holeImage;
    if (hole == nullptr) {
        return;
    }
    const double unitX = rect.width() / kCardWidth, unitY = rect.height() / kCardHeight;
    const auto rounded = [](double value) { return static_cast<int>(value + 0.5); };
    const int width = rounded(kHole * unitX), height = rounded(kHole * unitY);
    const ImageAttributes edges = mirroredEdges();
    for (int line = 0; line < kLineCount; ++line) {
        for (int step = 0; step < kStepCount; ++step) {
            if (!pattern.isSet(line, step)) {
                continue;
            }
            const int left = rect.left + rounded((kFirstX + kLinePitch * line) * unitX) - width / 2;
            const int top = rect.top + rounded((kFirstY - kStepPitch * step) * unitY) - height / 2;
            drawPicture(graphics, *hole, {left, top, left + width, top + height}, edges);
        }
    }
}

} // namespace

PixelRect cardDialogArea(const PanelRects& rects) noexcept {
    return inflated(united(rects.dialog, shadowOf(rects.dialog)), kRedrawMargin);
}

void drawPunchCard(GpGraphics* graphics, const PixelRect& rect, int slot) {
    const Picture* picture = imageCache().cardImage;
    if (picture == nullptr || rect.width() <= 0 || rect.height() <= 0) {
        return;
    }
    drawPicture(graphics, *picture, rect, mirroredEdges());
    if (slot < 0 || slot >= kCardSlots) {
        return;
    }
    const PunchCard& card = cardPanel().slots[static_cast<std::size_t>(slot)];
    drawCardTitle(graphics, rect, cardLabel(card, slot));
    if (card.used) {
        drawHoles(graphics, rect, card.pattern);
    }
}

void paintCardDialog(const Canvas& canvas, const PanelRects& rects) {
    if (!canvas.shows(cardDialogArea(rects))) {
        return;
    }
    GpGraphics* graphics = canvas.graphics;
    const int slot = cardPanel().dialogSlot;
    const PunchCard& card = cardPanel().slots[static_cast<std::size_t>(slot)];
    const PixelRect dialog = canvas.place(rects.dialog);
    fillBox(graphics, shadowOf(dialog), kShadow);
    fillBox(graphics, dialog, kDialogFill);
    outlineBox(graphics, dialog, kDialogEdge);

    constexpr int kHeaderHeight = 40;
    std::wstring header = cardLabel(card, slot);
    if (!card.used) {
        header += L" - EMPTY";
    }
    drawCenteredText(graphics, header,
                     {dialog.left, dialog.top, dialog.right, dialog.top + kHeaderHeight}, 18,
                     kDialogText);
    drawPunchCard(graphics, canvas.place(rects.dialogCard), slot);
    drawCenteredText(graphics, L"\u25C0", canvas.place(rects.previousCard), 34, kDialogText);
    drawCenteredText(graphics, L"\u25B6", canvas.place(rects.nextCard), 34, kDialogText);
    const auto button = [&](const PixelRect& rect, std::wstring_view text, float size,
                            std::uint32_t colour) {
        drawBox(graphics, canvas.place(rect), text, size, {kButtonFill, kButtonEdge, colour});
    };
    button(rects.title, L"TITLE", 13, kButtonText);
    button(rects.save, L"SAVE", 14, kButtonText);
    button(rects.load, L"LOAD", 14, card.used ? kButtonText : kButtonTextOff);
    button(rects.cancel, L"CANCEL", 11, kCancelText);
}

void paintReader(const Canvas& canvas, const PanelRects& rects, double scale) {
    if (!canvas.shows(rects.reader)) {
        return;
    }
    GpGraphics* graphics = canvas.graphics;
    const CardPanel& cards = cardPanel();
    const PixelRect reader = canvas.place(rects.reader);
    GraphicsState state = 0;
    GdipSaveGraphics(graphics, &state);
    GdipSetClipRectI(graphics, reader.left, reader.top, reader.width(), reader.height(),
                     CombineModeReplace);
    drawPunchCard(graphics, canvas.place(rects.readerCard),
                  cards.insertingCard ? cards.insertSlot : cards.insertedSlot);
    GdipRestoreGraphics(graphics, state);

    const Picture* plate = imageCache().readerFrontImage;
    const int row = controlShowing("c_scheda.PNG");
    if (plate != nullptr && row != kNoControl) {
        drawPicture(graphics, *plate, canvas.place(controlClientRect(row, scale)), mirroredEdges());
    }
}

} // namespace percussomatic
