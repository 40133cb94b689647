// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"
#include "window_timers.h"

namespace percussomatic {

// Mouse, keyboard and timer input. The shell translates each window message into one of these calls
// and carries out the returned request; all decisions are made here. Points and sizes are client
// pixels. GUI thread.

enum class Request {
    none,            // the input has been handled
    defaultHandling, // leave the message to the system
    captureMouse,
    releaseMouse,
    moveWindow,   // by `distance`
    resizeWindow, // to layoutScale(), around the window's centre
    closeWindow,
    showEffects,
    showMidi,
    showInfo,
    askTempo,             // then setTempoBpm()
    explainExternalTempo, // the tempo follows MIDI clock and cannot be typed
    askTitle              // of the card shown in the dialog; then setCardTitle()
};

struct InputResult {
    Request request = Request::none;
    PixelPoint distance{}; // for moveWindow
};

// Left button down. The press goes to the card dialog or the strip, else to MIDI learn, else to a
// control. Anywhere else it begins a drag of the window.
InputResult pressPanel(PixelPoint point, Size client);

// Mouse move; fine: Shift is held.
InputResult movePointer(PixelPoint point, Size client, bool fine);

// Left button up.
InputResult releasePointer();

struct WheelTurn {
    int delta;           // 120 per notch
    bool control, shift; // keys held
};
InputResult turnWheelAt(PixelPoint point, Size client, const WheelTurn& turn);

enum class Key { escape, plus, minus, other };
InputResult pressKey(Key key, bool control); // control: Ctrl is held

InputResult fireTimer(WindowTimer timer);

} // namespace percussomatic
