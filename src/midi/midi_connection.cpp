#include "midi/midi_connection.h"

#include "midi/midi_clock.h"
#include "midi/midi_profile.h"
#include "midi/midi_state.h"
#include "midi/midi_system.h"
#include "sequencer/transport.h"
#include "ui/redraw.h"

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
    rememberMidiDevice(deviceName);
    flushSettings();
    importLegacyMidiMap();
    loadMidiProfile();
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
