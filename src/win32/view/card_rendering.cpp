// SPDX-License-Identifier: MIT
#include "win32/view/card_rendering.h"

#include "cards/card_panel.h"
#include "graphics/scaled_pictures.h"
#include "panel/card_layout.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/display_scale.h"
#include "win32/graphics/images.h"

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

PixelRect shadowOf(const PixelRect& dialog) noexcept {
    const int offset = scaledForDpi(6);
    return {dialog.left + offset, dialog.top + offset, dialog.right + offset,
            dialog.bottom + offset};
}

void drawCardTitle(GpGraphics* graphics, const PixelRect& rect, std::wstring_view title) {
    constexpr double kSideMargin = 0.07; // of the card's width
    using card_layout::kTitleBottom, card_layout::kTitleTop;
    const double width = rect.width();
    const double unitY = static_cast<double>(rect.height()) / card_layout::kHeight;
    const int margin = static_cast<int>(kSideMargin * width);
    const int top = rect.top + static_cast<int>(kTitleTop * unitY);
    const int height = static_cast<int>(kTitleBottom * unitY) - static_cast<int>(kTitleTop * unitY);
    drawText(graphics, title, {rect.left + margin, top, rect.right - margin, top + height},
             {.family = L"Consolas",
              .style = FontStyleBold,
              .sizePixels = static_cast<float>(width * 0.075 + 2.0 * displayDpi() / kDesignDpi),
              .argb = kCardTitle,
              .singleLine = true});
}

void punchHoles(PixelImage& image, const Pattern& pattern) {
    using namespace card_layout;
    const PixelImage* picture = imageCache().holeImage;
    if (picture == nullptr) {
        return;
    }
    const double unitX = static_cast<double>(image.width) / kWidth;
    const double unitY = static_cast<double>(image.height) / kHeight;
    const auto rounded = [](double value) { return static_cast<int>(value + 0.5); };
    const PixelImage& hole =
        cachedScaled(*picture, rounded(kHoleSize * unitX), rounded(kHoleSize * unitY));
    for (int line = 0; line < kLineCount; ++line) {
        for (int step = 0; step < kStepCount; ++step) {
            if (pattern.isSet(line, step)) {
                const int x = rounded((kFirstHoleX + kHolePitchX * line) * unitX) - hole.width / 2;
                const int y = rounded((kFirstHoleY - kHolePitchY * step) * unitY) - hole.height / 2;
                blendPixels(hole, x, y, viewOf(image));
            }
        }
    }
}

// Cached picture of a card with its title and holes. Redrawn only if the card changes, not with
// every frame of its way through the reader.
struct CachedCard {
    int slot = -1;
    std::wstring title;
    bool used = false;
    Pattern pattern;
    PixelImage image;

    const PixelImage& drawn(int shownSlot, int width, int height);
};

const PixelImage& CachedCard::drawn(int shownSlot, int width, int height) {
    const PunchCard& card = cardPanel().slot(shownSlot);
    const std::wstring shownTitle = cardLabel(card, shownSlot);
    if (slot == shownSlot && title == shownTitle && used == card.used &&
        pattern.steps == card.pattern.steps && image.width == width && image.height == height) {
        return image;
    }
    const PixelImage* picture = imageCache().cardImage;
    if (picture == nullptr || width <= 0 || height <= 0) {
        return image = {};
    }
    slot = shownSlot;
    title = shownTitle;
    used = card.used;
    pattern = card.pattern;
    image = cachedScaled(*picture, width, height);
    {
        const Bitmap bitmap = bitmapOver(viewOf(image));
        const Graphics graphics = graphicsOn(bitmap.get());
        drawCardTitle(graphics.get(), {0, 0, width, height}, title);
    }
    if (used) {
        punchHoles(image, pattern);
    }
    return image;
}

void drawCard(const Canvas& canvas, CachedCard& card, const PixelRect& rect, int slot) {
    canvas.draw(card.drawn(slot, rect.width(), rect.height()), rect.left, rect.top);
}

} // namespace

PixelRect cardDialogArea(const PanelRects& rects) noexcept {
    // In a small window, the row of buttons is wider than the dialog.
    const PixelRect buttons = united(rects.title, rects.load);
    return inflated(united(united(rects.dialog, buttons), shadowOf(rects.dialog)), kRedrawMargin);
}

PixelRect readerArea(const PanelRects& rects, double scale) noexcept {
    const int plate = findControl(control::kReaderPlate);
    return plate == kNoControl ? rects.reader
                               : united(rects.reader, controlClientRect(plate, scale));
}

void paintCardDialog(Canvas& canvas, const PanelRects& rects) {
    if (!canvas.intersects(cardDialogArea(rects))) {
        return;
    }
    const int slot = cardPanel().dialogSlot;
    const PunchCard& card = cardPanel().slot(slot);
    // Only the right and lower edge of the shadow: the dialog is opaque and covers the rest.
    const PixelRect shadow = shadowOf(rects.dialog);
    canvas.fill({rects.dialog.right, shadow.top, shadow.right, shadow.bottom}, kShadow);
    canvas.fill({shadow.left, rects.dialog.bottom, rects.dialog.right, shadow.bottom}, kShadow);
    canvas.fill(rects.dialog, kDialogFill);
    canvas.outline(rects.dialog, kDialogEdge);

    const int headerHeight = scaledForDpi(40);
    std::wstring header = cardLabel(card, slot);
    if (!card.used) {
        header += L" - EMPTY";
    }
    const auto text = [&](const PixelRect& rect, std::wstring_view words, float size) {
        if (canvas.intersects(rect)) {
            drawCenteredText(canvas, words, rect,
                             {.sizePixels = scaledForDpi(size), .argb = kDialogText});
        }
    };
    text({rects.dialog.left, rects.dialog.top, rects.dialog.right, rects.dialog.top + headerHeight},
         header, 18);
    static CachedCard cached;
    drawCard(canvas, cached, rects.dialogCard, slot);
    text(rects.previousCard, L"\u25C0", 34);
    text(rects.nextCard, L"\u25B6", 34);
    const auto button = [&](const PixelRect& rect, std::wstring_view caption, float size,
                            std::uint32_t colour) {
        if (canvas.intersects(rect)) {
            drawBox(canvas, rect, caption, scaledForDpi(size), {kButtonFill, kButtonEdge, colour});
        }
    };
    button(rects.title, L"TITLE", 13, kButtonText);
    button(rects.save, L"SAVE", 14, kButtonText);
    button(rects.load, L"LOAD", 14, card.used ? kButtonText : kButtonTextOff);
    button(rects.cancel, L"CANCEL", 11, kCancelText);
}

void paintReader(Canvas& canvas, const PanelRects& rects, double scale) {
    if (!canvas.intersects(readerArea(rects, scale))) {
        return;
    }
    // The card is clipped to the reader's opening.
    const PixelRect clip = intersected(rects.reader, canvas.region());
    if (clip.width() > 0) {
        const Canvas reader(canvas.pixels().part(canvas.toLocal(clip)), clip);
        static CachedCard cached;
        const CardPanel& cards = cardPanel();
        drawCard(reader, cached, rects.readerCard,
                 cards.insertingCard ? cards.insertSlot : cards.insertedSlot);
    }

    const PixelImage* plate = imageCache().readerFrontImage;
    const int row = findControl(control::kReaderPlate);
    if (plate != nullptr && row != kNoControl) {
        const PixelRect rect = controlClientRect(row, scale);
        canvas.draw(cachedScaled(*plate, rect.width(), rect.height()), rect.left, rect.top);
    }
}

} // namespace percussomatic
