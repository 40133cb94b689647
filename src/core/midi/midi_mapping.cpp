// SPDX-License-Identifier: MIT
#include "midi/midi_mapping.h"

#include "midi/midi_glide.h"
#include "midi/midi_learn.h"
#include "midi/midi_state.h"
#include "panel/control_names.h"
#include "panel/control_state.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/pattern_edits.h"
#include "sequencer/sequencer.h"
#include "sequencer/transport.h"

#include <algorithm>
#include <string>
#include <utility>

namespace percussomatic {

namespace {

constexpr int kMinPressedValue = 64;
constexpr double kMaxValue = 127.0;

// Changes nothing but the switch's own bit: MIDI neither sets steps, clears lines nor switches the
// power off.
void setToggleBit(int index, bool on) {
    std::uint8_t& bit = controlState().toggleBit(index);
    if ((bit != 0) == on) {
        return;
    }
    bit = on ? 1 : 0;
    redrawControl(index, Repaint::now);
}

// Unlike a mouse click, does not trigger step 0 and does not repaint the columns.
void startOrStop() {
    Sequencer& now = sequencer();
    setRunning(!now.running);
    if (now.running) {
        now.currentStep = 0;
    }
    clockStart(mainWindow());
    redrawControl(findControl(control::kStartStop), Repaint::later);
    updateBeatLamp();
    flushPainting();
}

// Unlike a mouse click, leaves a current step beyond the new length for the next tick to wrap.
void selectLength(std::uint32_t length) {
    if (length == sequencer().sequenceLength) {
        return;
    }
    sequencer().sequenceLength = length;
    redrawLengthSwitches();
    flushPainting();
}

void pressByMidi(int index) {
    switch (controlKind(index)) {
    case ControlKind::edit:
        toggleEditMode();
        break;
    case ControlKind::startStop:
        startOrStop();
        break;
    case ControlKind::length:
        selectLength(controlRole(index).length);
        break;
    default:
        setToggleBit(index, controlState().toggleBit(index) == 0);
        break;
    }
}

// End of the list if there is none.
auto findMapping(int channel, int controller) noexcept {
    return std::ranges::find_if(midiState().mappings, [=](const MidiMapping& each) {
        return each.channel == channel && each.controller == controller;
    });
}

} // namespace

int mappedControl(int channel, int controller) noexcept {
    const auto mapping = findMapping(channel, controller);
    return mapping == midiState().mappings.end() ? kNoControl : findControl(mapping->controlId);
}

void handleControlChange(int channel, int controller, int value) {
    MidiState& midi = midiState();
    setLearnStatus(L"Received: CC " + std::to_wstring(controller) + L" Value " +
                   std::to_wstring(value) + L" CH " + std::to_wstring(channel + 1));
    if (learnControlChange(channel, controller, value)) {
        return;
    }
    const auto mapping = findMapping(channel, controller);
    if (mapping == midi.mappings.end()) {
        return;
    }
    const int last =
        std::exchange(midi.lastValue(channel, controller), static_cast<std::uint8_t>(value));
    applyMidiToControl(findControl(mapping->controlId), value,
                       last < kMinPressedValue && value >= kMinPressedValue);
}

void applyMidiToControl(int index, int value, bool rising) {
    if (index < 0 || index >= kControlCount) {
        return;
    }
    const ControlKind kind = controlKind(index);
    if (kind == ControlKind::rotary || kind == ControlKind::slider) {
        glideTo(index, std::clamp(value / kMaxValue, 0.0, 1.0));
    } else if (kind == ControlKind::clearAll || kind == ControlKind::clearLine) {
        setToggleBit(index, value >= kMinPressedValue);
    } else if (rising && isToggle(controlRow(index))) {
        pressByMidi(index);
    }
}

} // namespace percussomatic
