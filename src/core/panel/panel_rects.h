// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

namespace percussomatic {

// Rectangles of what is drawn over the panel, in client pixels: the boxes of the strip along the
// top, at fixed distances from the window's edges, the card dialog in the middle, and the card
// reader. The fixed distances are scaled to the display's DPI; those of the strip to less in a
// window too narrow for its boxes.
struct PanelRects {
    int stripDpi = 0; // of the strip's boxes and texts
    PixelRect info, bpm, cards, midi, effects;
    PixelRect dialog, previousCard, nextCard, title, save, load, cancel;
    PixelRect dialogCard; // the card shown in the dialog
    PixelRect reader;     // the visible part of a card in the reader is clipped to this
    PixelRect readerCard;
};

// readerCardY: top edge of the card in the reader, in client pixels. GUI thread.
PanelRects panelRects(int clientWidth, int clientHeight, double readerCardY) noexcept;

} // namespace percussomatic
