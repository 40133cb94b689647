// SPDX-License-Identifier: MIT
#pragma once

#include "midi/midi_state.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic {

// MIDI settings: the last device, and one section per device with its profile. A profile has one
// key per control with the value "channel,controller", both counted from 0. GUI thread.

// The device to connect at start-up; empty if there is none.
std::wstring savedMidiDevice();
void rememberMidiDevice(const std::wstring& deviceName); // does not flush

// Ignores the case of ASCII letters, and leading and trailing blanks, which the settings file does
// not preserve.
bool sameDeviceName(std::wstring_view a, std::wstring_view b) noexcept;

// Replaces characters that a section name cannot hold by '_', so names that differ only in those
// share a section.
std::wstring midiProfileSectionName(std::wstring_view deviceName);

// Replaces the mappings by those of the connected device. Invalid entries are skipped; they remain
// in the file until the profile is saved.
void loadMidiProfile();

// Replaces the device's section by the mappings, and deletes it if there are none. No-op without a
// device.
void saveMidiProfile();

// Parses the older mapping file, which does not distinguish devices and may bind a control twice.
// Invalid lines are skipped; nullopt if the first line is wrong.
std::optional<std::vector<MidiMapping>> parseLegacyMidiMap(std::string_view bytes);

// Imports the older mapping file into the connected device, unless that has a section already.
void importLegacyMidiMap();

// Binds a control to a Control Change and saves the profile. Earlier bindings of either are
// removed.
void addMidiMapping(const std::string& controlId, int channel, int controller);

} // namespace percussomatic
