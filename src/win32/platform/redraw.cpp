// SPDX-License-Identifier: MIT
#include "redraw.h"

#include "cards/card_panel.h"
#include "main_window_handle.h"
#include "panel/control_geometry.h"
#include "win32/view/card_rendering.h"
#include "win32/view/panel_rendering.h"

namespace percussomatic {

namespace {

HWND window() noexcept {
    return static_cast<HWND>(mainWindow());
}

Size mainClient() noexcept {
    return clientSize(window());
}

double clientScale() noexcept {
    return windowScale(window());
}

void invalidate(const PixelRect& area, Repaint when) {
    const RECT dirty{area.left, area.top, area.right, area.bottom};
    if (window() != nullptr) {
        RedrawWindow(window(), &dirty, nullptr,
                     RDW_INVALIDATE | RDW_NOERASE | (when == Repaint::now ? RDW_UPDATENOW : 0U));
    }
}

void redraw(const PixelRect& rect, Repaint when) {
    invalidate(inflated(rect, kRedrawMargin), when);
}

} // namespace

void redrawControl(int index, Repaint when) {
    if (index != kNoControl) {
        redraw(controlClientRect(index, clientScale()), when);
    }
}

void redrawSlider(int index, std::uint32_t oldOffset) {
    const double scale = clientScale();
    redraw(united(controlClientRect(index, scale, oldOffset), controlClientRect(index, scale)),
           Repaint::now);
}

void redrawTempoBox() {
    redraw(cardPanelRects(mainClient()).bpm, Repaint::now);
}

void redrawEffectsBox() {
    redraw(cardPanelRects(mainClient()).effects, Repaint::later);
}

void redrawMidiBoxes() {
    const PanelRects rects = cardPanelRects(mainClient());
    redraw(united(rects.midi, rects.cards), Repaint::later);
}

void redrawPanel() {
    if (window() != nullptr) {
        InvalidateRect(window(), nullptr, FALSE);
        UpdateWindow(window());
    }
}

void redrawCardDialog() {
    invalidate(cardDialogArea(cardPanelRects(mainClient())), Repaint::now);
}

void redrawReader() {
    invalidate(readerArea(cardPanelRects(mainClient()), clientScale()), Repaint::later);
}

void flushPainting() {
    if (window() != nullptr) {
        UpdateWindow(window());
    }
}

} // namespace percussomatic
