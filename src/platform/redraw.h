// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// All repaints that the core may ask for. GUI thread.

enum class Repaint {
    now,  // painted before the call returns: feedback to the mouse
    later // only marked; painted with the next batch or by flushPainting()
};

// One control in its current state, with a small margin. No-op for kNoControl.
void redrawControl(int index, Repaint when);

// A slider that has moved from `oldOffset` (layout units) to its current offset.
void redrawSlider(int index, std::uint32_t oldOffset);

void redrawTempoBox();
void redrawEffectsBox();
void redrawMidiBoxes(); // MIDI and, beside it, CARDS

void redrawPanel();      // the whole client area, now
void redrawCardDialog(); // with its shadow
void redrawReader();     // the area in which a card in the reader can be seen

// Paints what is marked now, without waiting for the message queue.
void flushPainting();

} // namespace percussomatic
