// SPDX-License-Identifier: MIT
#include "sequencer/lamps.h"

#include "panel/control_names.h"
#include "panel/control_state.h"
#include "redraw.h"
#include "sequencer/sequencer.h"

namespace percussomatic {

namespace {

void redrawStepIfSet(int line, int step) {
    if (sequencer().pattern.isSet(line, step)) {
        redrawControl(stepButtonIndex(line, step), Repaint::later);
    }
}

} // namespace

bool controlLit(int index) noexcept {
    const ControlRole& role = controlRole(index);
    const Sequencer& now = sequencer();
    const bool toggledOn = controlState().toggleBit(index) != 0;
    switch (role.kind) {
    case ControlKind::beatLamp:
        return beatLampLit();
    case ControlKind::startStop:
        return now.running;
    case ControlKind::edit:
        return now.editMode;
    case ControlKind::length:
        return role.length == now.sequenceLength;
    case ControlKind::stepButton:
        return stepLampLit(index);
    case ControlKind::clearAll:
        return now.clearAllHeld || toggledOn; // only MIDI sets the bit of a clear switch
    case ControlKind::clearLine:
        return index == now.heldLineClear || toggledOn;
    case ControlKind::power:
    case ControlKind::toggle:
        return toggledOn;
    case ControlKind::picture:
    case ControlKind::rotary:
    case ControlKind::slider:
        break;
    }
    return false;
}

bool stepLampLit(int control) noexcept {
    const ControlRole& role = controlRole(control);
    const Sequencer& now = sequencer();
    if (role.kind != ControlKind::stepButton || !now.pattern.isSet(role.line, role.step)) {
        return false;
    }
    return now.editMode ||
           (now.running && static_cast<std::uint32_t>(role.step) == now.currentStep) ||
           control == now.heldStepButton;
}

bool beatLampLit() noexcept {
    const Sequencer& now = sequencer();
    return now.running && (now.editMode || now.currentStep == 0);
}

void updateBeatLamp() {
    const bool lit = beatLampLit();
    if (lit == sequencer().beatLampShown) {
        return;
    }
    sequencer().beatLampShown = lit;
    redrawControl(findControl(control::kBeatLamp), Repaint::later);
}

void redrawStepColumn(std::uint32_t step) {
    for (int line = 0; line < kLineCount && step < kStepCount; ++line) {
        redrawStepIfSet(line, static_cast<int>(step));
    }
}

void redrawSetSteps(int line) {
    for (int step = 0; step < kStepCount; ++step) {
        redrawStepIfSet(line, step);
    }
}

void redrawCurrentColumn(std::uint32_t step) {
    if (!sequencer().editMode) {
        redrawStepColumn(step);
    }
}

} // namespace percussomatic
