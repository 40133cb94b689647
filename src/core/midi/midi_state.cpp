// SPDX-License-Identifier: MIT
#include "midi/midi_state.h"

#include "tool_windows.h"

#include <utility>

namespace percussomatic {

MidiState& midiState() noexcept {
    static MidiState state;
    return state;
}

void resetMidiState() {
    midiState() = MidiState{};
}

void setLearnStatus(std::wstring text) {
    midiState().learnStatusText = std::move(text);
    showLearnStatus(midiState().learnStatusText);
}

} // namespace percussomatic
