// SPDX-License-Identifier: MIT
#pragma once

#include "panel/panel_rects.h"
#include "win32/graphics/drawing.h"

namespace percussomatic {

// Draws punch cards, in the card dialog and in the reader. Only reads the state. GUI thread.

// The area to repaint when the dialog changes: the dialog, its buttons and its shadow.
PixelRect cardDialogArea(const PanelRects& rects) noexcept;

// The area to repaint when the card in the reader changes: its opening, and the plate, which
// reaches beyond it and is drawn over the card. `scale` is client pixels per layout unit.
PixelRect readerArea(const PanelRects& rects, double scale) noexcept;

void paintCardDialog(Canvas& canvas, const PanelRects& rects);

// Draws the card in the reader, then the reader's plate over it, so that the card passes behind the
// plate.
void paintReader(Canvas& canvas, const PanelRects& rects, double scale);

} // namespace percussomatic
