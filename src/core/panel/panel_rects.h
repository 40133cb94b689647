// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

namespace percussomatic {

// What the program itself draws over the panel, in client pixels: the boxes of the strip along the
// top at fixed distances from the window's edges, the card dialog in the middle, and the reader.
// The fixed distances grow with the display's DPI.
struct PanelRects {
    PixelRect info, bpm, cards, midi, effects;
    PixelRect dialog, previousCard, nextCard, title, save, load, cancel;
    PixelRect dialogCard; // the card shown in the dialog
    PixelRect reader;     // where a card in the reader can be seen
    PixelRect readerCard;
};

// readerCardY: upper edge of the card in the reader.
PanelRects panelRects(int clientWidth, int clientHeight, double readerCardY) noexcept;

} // namespace percussomatic
