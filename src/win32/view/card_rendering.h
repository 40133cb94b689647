#pragma once

#include "panel/panel_rects.h"
#include "win32/graphics/drawing.h"

namespace percussomatic {

// Punch cards as they are seen: in the dialog and in the reader. Reads the cards and writes
// nothing. GUI thread.

// The dialog and its shadow: what to paint again when it changes.
PixelRect cardDialogArea(const PanelRects& rects) noexcept;

void paintCardDialog(Canvas& canvas, const PanelRects& rects);

// A card in the reader, and over it the reader's plate, so that the card seems to pass behind.
void paintReader(Canvas& canvas, const PanelRects& rects, double scale);

} // namespace percussomatic
