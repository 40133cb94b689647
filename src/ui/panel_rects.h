#pragma once

#include "ui/control_layout.h"

namespace percussomatic {

// What the program itself draws over the panel: the boxes of the strip along the top, in client
// pixels at fixed distances from the window's edges.
struct PanelRects {
    PixelRect info, bpm, cards, midi, effects;
};

PanelRects panelRects(int clientWidth) noexcept;

} // namespace percussomatic
