// SPDX-License-Identifier: MIT
#include "midi/midi_connection.h"

#include "midi/midi_clock.h"
#include "midi/midi_profile.h"
#include "midi/midi_state.h"
#include "redraw.h"
#include "sequencer/transport.h"
#include "settings_store.h"

#include <utility>
#include <vector>

namespace percussomatic {

namespace {

void showConnection() {
    updateSyncStatus();
    redrawTempoBox();
    redrawMidiBoxes();
}

} // namespace

void midiPortOpened(const std::wstring& deviceName) {
    MidiState& midi = midiState();
    resetMidiClock();
    midi.profileDeviceName = deviceName;
    midi.mappings.clear();
    rememberMidiDevice(deviceName);
    flushSettings();
    importLegacyMidiMap();
    std::vector<MidiMapping> imported = midi.mappings;
    loadMidiProfile();
    if (midi.mappings.empty()) {
        midi.mappings = std::move(imported); // the settings file could not be written
    }
    setLearnStatus(midi.mappings.empty()
                       ? L"Connected - no profile found. Press LEARN."
                       : L"Profile loaded: " + std::to_wstring(midi.mappings.size()) +
                             L" mapping(s)");
    showConnection();
}

void midiPortClosed() {
    MidiState& midi = midiState();
    resetMidiClock();
    midi.profileDeviceName.clear();
    midi.mappings.clear();
    setLearnStatus(L"No MIDI device connected");
    showConnection();
}

} // namespace percussomatic
