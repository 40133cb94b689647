#include "midi/midi_mapping.h"

#include "midi/midi_glide.h"
#include "midi/midi_learn.h"
#include "midi/midi_state.h"
#include "sequencer/front_panel.h"
#include "sequencer/sequencer.h"
#include "sequencer/system.h"
#include "sequencer/transport.h"
#include "ui/control_layout.h"
#include "ui/redraw.h"

#include <algorithm>
#include <string>
#include <utility>

namespace percussomatic {

namespace {

constexpr int kPressedFrom = 64;
constexpr double kHighestValue = 127.0;

bool isClearSwitch(std::string_view name) noexcept {
    return sameName(name, "sw_018") ||
           std::any_of(kLineClearSwitches.begin(), kLineClearSwitches.end(),
                       [name](std::string_view each) { return sameName(name, each); });
}

// Null for any control that is no length switch.
const LengthSwitch* lengthSwitch(std::string_view name) noexcept {
    const auto* const found =
        std::find_if(kLengthSwitches.begin(), kLengthSwitches.end(),
                     [name](const LengthSwitch& each) { return sameName(name, each.name); });
    return found != kLengthSwitches.end() ? found : nullptr;
}

// Only the bit: the pattern under a step button and the lines under a clear switch stay as they
// are, and the power stays on.
void setToggleBit(int index, bool on) {
    std::uint8_t& bit = controlState().toggleBits[static_cast<std::size_t>(index)];
    if ((bit != 0) == on) {
        return;
    }
    bit = on ? 1 : 0;
    redrawControl(index, Repaint::now);
}

// Unlike the hand on the panel: step 0 stays silent until it comes round, and the columns are not
// repainted.
void startOrStop() {
    Sequencer& now = sequencer();
    now.running = !now.running;
    if (now.running) {
        now.currentStep = 0;
    }
    clockStart(mainWindow());
    redrawControl(findControl("sw_007"), Repaint::later);
    updateBeatLamp();
    flushPainting();
}

// Unlike the hand on the panel: a step beyond the new length is brought back by the next tick.
void selectLength(std::uint32_t length) {
    if (length == sequencer().sequenceLength) {
        return;
    }
    sequencer().sequenceLength = length;
    for (const LengthSwitch& each : kLengthSwitches) {
        redrawControl(findControl(each.name), Repaint::later);
    }
    flushPainting();
}

void pressByMidi(int index, std::string_view name) {
    if (sameName(name, "sw_008")) {
        toggleEditMode();
    } else if (sameName(name, "sw_007")) {
        startOrStop();
    } else if (const LengthSwitch* chosen = lengthSwitch(name); chosen != nullptr) {
        selectLength(chosen->length);
    } else {
        setToggleBit(index, controlState().toggleBits[static_cast<std::size_t>(index)] == 0);
    }
}

} // namespace

void handleControlChange(int channel, int controller, int value) {
    MidiState& midi = midiState();
    setLearnStatus(L"Received: CC " + std::to_wstring(controller) + L" Value " +
                   std::to_wstring(value) + L" CH " + std::to_wstring(channel + 1));
    if (learnControlChange(channel, controller, value)) {
        return;
    }
    const auto mapping = std::find_if(
        midi.mappings.begin(), midi.mappings.end(), [channel, controller](const MidiMapping& each) {
            return each.channel == channel && each.controller == controller;
        });
    if (mapping == midi.mappings.end()) {
        return;
    }
    std::uint8_t& lastValue =
        midi.ccLastValue[static_cast<std::size_t>(channel)][static_cast<std::size_t>(controller)];
    const int last = std::exchange(lastValue, static_cast<std::uint8_t>(value));
    applyMidiToControl(findControl(mapping->controlId), value,
                       last < kPressedFrom && value >= kPressedFrom);
}

void applyMidiToControl(int index, int value, bool rising) {
    if (index < 0 || index >= kControlCount) {
        return;
    }
    const ControlRow& row = controlRows()[static_cast<std::size_t>(index)];
    if (isRotary(row) || isSlider(row)) {
        glideTo(index, std::clamp(value / kHighestValue, 0.0, 1.0));
    } else if (isClearSwitch(row.name)) {
        setToggleBit(index, value >= kPressedFrom);
    } else if (rising && isToggle(row)) {
        pressByMidi(index, row.name);
    }
}

} // namespace percussomatic
