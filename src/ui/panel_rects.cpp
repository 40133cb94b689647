#include "ui/panel_rects.h"

namespace percussomatic {

PanelRects panelRects(int clientWidth) noexcept {
    constexpr int kTop = 12, kBottom = 40;
    const int w = clientWidth;
    return {
        .info = {64, kTop, 142, kBottom},
        .bpm = {442, kTop, 542, kBottom},
        .cards = {w - 142, kTop, w - 64, kBottom},
        .midi = {w - 232, kTop, w - 154, kBottom},
        .effects = {w - 322, kTop, w - 244, kBottom},
    };
}

} // namespace percussomatic
