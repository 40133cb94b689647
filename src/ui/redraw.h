#pragma once

#include <cstdint>

namespace percussomatic {

// All that behaviour may ask of the screen. The window implements these once; the native tests
// record the calls instead. GUI thread.

enum class Repaint {
    now,  // painted before the call returns: feedback to a hand
    later // marked only; painted with the next batch or flushPainting
};

// One control in its present state, with a small margin. Nothing happens for kNoControl.
void redrawControl(int index, Repaint when);

// A slider that has moved from `oldOffset` (layout units) to its present offset.
void redrawSlider(int index, std::uint32_t oldOffset);

void redrawTempoBox();
void redrawEffectsBox();
void redrawMidiBoxes(); // MIDI and, beside it, CARDS

void redrawPanel();      // the whole client area, at once
void redrawCardDialog(); // with its shadow
void redrawReader();     // the area in which a card in the reader can be seen

// Paints what is marked at once, without waiting for the message queue.
void flushPainting();

} // namespace percussomatic
