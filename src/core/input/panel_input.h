// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"
#include "window_timers.h"

namespace percussomatic {

// What mouse, keys and timers mean to the instrument. The shell turns each message of the system
// into one of these calls and carries out the request that comes back; it takes no decision of its
// own. Points and sizes are client pixels. GUI thread.

enum class Request {
    none,            // the input is used up
    defaultHandling, // leave the message to the system
    captureMouse,
    releaseMouse,
    moveWindow,   // by `distance`
    resizeWindow, // layoutScale() has changed; keep the window's centre
    closeWindow,
    showEffects,
    showMidi,
    showInfo,
    askTempo,             // then setTempoBpm()
    explainExternalTempo, // the MIDI clock leads: the tempo cannot be typed
    askTitle              // of the card shown in the dialog; then setCardTitle()
};

struct InputResult {
    Request request = Request::none;
    PixelPoint distance{}; // for moveWindow
};

// Left button down. The first that takes the press ends it: card dialog and strip, MIDI learn,
// controls; on the bare panel a drag of the window begins.
InputResult pressPanel(PixelPoint point, Size client);

// The mouse moves; fine: Shift is held.
InputResult movePointer(PixelPoint point, Size client, bool fine);

// Left button up.
InputResult releasePointer();

struct WheelTurn {
    int delta; // 120 per notch
    bool control, shift;
};
InputResult turnWheelAt(PixelPoint point, Size client, const WheelTurn& turn);

enum class Key { escape, plus, minus, other };
InputResult pressKey(Key key, bool control);

InputResult fireTimer(WindowTimer timer);

} // namespace percussomatic
