#pragma once

#include "ui/drawing.h"
#include "ui/panel_rects.h"

namespace percussomatic {

// Punch cards as they are seen: in the dialog and in the reader. Reads the cards and writes
// nothing. GUI thread.

// The dialog and its shadow: what to paint again when it changes.
PixelRect cardDialogArea(const PanelRects& rects) noexcept;

// A card with its title and holes, stretched into the rectangle; other slots than 0..9 give a blank
// card.
void drawPunchCard(Gdiplus::GpGraphics* graphics, const PixelRect& rect, int slot);

void paintCardDialog(const Canvas& canvas, const PanelRects& rects);

// A card in the reader, and over it the reader's plate, so that the card seems to pass behind.
void paintReader(const Canvas& canvas, const PanelRects& rects, double scale);

} // namespace percussomatic
