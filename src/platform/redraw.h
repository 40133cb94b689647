// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// Repaint requests. GUI thread.

enum class Repaint {
    now,  // painted before the call returns, for mouse feedback
    later // only marked; painted with the next batch or by flushPainting()
};

// One control in its current state, with a small margin. No-op for kNoControl.
void redrawControl(int index, Repaint when);

// A slider that has moved from `oldOffset` (layout units) to its current offset.
void redrawSlider(int index, std::uint32_t oldOffset);

void redrawTempoBox();
void redrawEffectsBox();
void redrawMidiBoxes(); // the MIDI and CARDS boxes

void redrawPanel();      // the whole client area, now
void redrawCardDialog(); // with its shadow
void redrawReader();     // the area in which the card in the reader is visible

// Paints all marked areas before it returns.
void flushPainting();

} // namespace percussomatic
