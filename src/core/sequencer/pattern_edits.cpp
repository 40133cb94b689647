// SPDX-License-Identifier: MIT
#include "sequencer/pattern_edits.h"

#include "panel/control_names.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"

namespace percussomatic {

void toggleStep(int line, int step) {
    Sequencer& now = sequencer();
    now.pattern.set(line, step, !now.pattern.isSet(line, step));
    now.heldStepButton = stepButtonIndex(line, step);
    redrawControl(now.heldStepButton, Repaint::now);
}

void clearAll() {
    Sequencer& now = sequencer();
    now.clearAllHeld = true;
    redrawControl(findControl(control::kClearAll), Repaint::later);
    for (int line = 0; line < kLineCount; ++line) {
        redrawSetSteps(line);
    }
    now.pattern = Pattern{};
    flushPainting();
}

void clearLine(int line, int clearSwitch) {
    Sequencer& now = sequencer();
    now.heldLineClear = clearSwitch;
    redrawControl(clearSwitch, Repaint::later);
    redrawSetSteps(line);
    for (int step = 0; step < kStepCount; ++step) {
        now.pattern.set(line, step, false);
    }
    flushPainting();
}

void setSequenceLength(std::uint32_t length) {
    Sequencer& now = sequencer();
    if (length == now.sequenceLength) {
        return;
    }
    redrawLengthSwitches();
    now.sequenceLength = length;
    if (now.currentStep >= length) {
        const bool columnShows = now.running && !now.editMode;
        if (columnShows) {
            redrawStepColumn(now.currentStep);
        }
        now.currentStep = 0;
        if (columnShows) {
            redrawStepColumn(0);
        }
        updateBeatLamp();
    }
    flushPainting();
}

void redrawLengthSwitches() {
    for (const std::string_view name : control::kLengthSwitches) {
        redrawControl(findControl(name), Repaint::later);
    }
}

} // namespace percussomatic
