// SPDX-License-Identifier: MIT
#include "midi/midi_learn.h"

#include "midi/midi_profile.h"
#include "midi/midi_state.h"
#include "panel/control_geometry.h"

#include <string>

namespace percussomatic {

namespace {

std::wstring widen(const std::string& id) {
    return {id.begin(), id.end()};
}

bool isLearnable(int index) {
    return controlKind(index) != ControlKind::picture &&
           controlKind(index) != ControlKind::beatLamp;
}

// Hit test by the pixels drawn; of a slider, only the thumb counts.
int learnableControlAt(PixelPoint client, double scale) {
    for (int index = kControlCount - 1; index >= 0; --index) {
        if (isLearnable(index) && showsControlAt(index, client, scale)) {
            return index;
        }
    }
    return kNoControl;
}

void setLearn(bool armed, std::string_view waitingFor = {}) {
    MidiState& midi = midiState();
    midi.learnArmed = armed;
    midi.learnWaitingForMidi = !waitingFor.empty();
    midi.learnTargetId = waitingFor;
}

} // namespace

void armMidiLearn() {
    setLearn(true);
    setLearnStatus(L"Learn: click a control on the instrument");
}

bool learnClick(PixelPoint client, double scale) {
    if (!midiState().learnArmed) {
        return false;
    }
    const int index = learnableControlAt(client, scale);
    if (index == kNoControl) {
        setLearnStatus(L"Learn: click a rotary, slider or button");
        return true;
    }
    const std::string_view id = controlRow(index).name;
    if (id.empty()) {
        setLearnStatus(L"Learn: selected control has no stable ID");
        return true;
    }
    setLearn(false, id);
    setLearnStatus(L"Move a MIDI control for: " + widen(midiState().learnTargetId));
    return true;
}

bool learnControlChange(int channel, int controller, int value) {
    MidiState& midi = midiState();
    if (!midi.learnWaitingForMidi) {
        return false;
    }
    const std::string id = midi.learnTargetId;
    midi.learnWaitingForMidi = false;
    midi.learnTargetId.clear();
    addMidiMapping(id, channel, controller);
    midi.lastValue(channel, controller) = static_cast<std::uint8_t>(value);
    setLearnStatus(L"Mapped " + widen(id) + L" to CC " + std::to_wstring(controller) + L" / CH " +
                   std::to_wstring(channel + 1));
    return true;
}

void clearMidiMappings() {
    midiState().mappings.clear();
    saveMidiProfile();
    setLearn(false);
    setLearnStatus(L"All MIDI mappings cleared");
}

} // namespace percussomatic
