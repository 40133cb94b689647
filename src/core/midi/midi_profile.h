#pragma once

#include "midi/midi_state.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic {

// What the settings file holds of MIDI: the last device, and for every device a section with its
// profile, one key per control, "channel,controller" counted from 0. GUI thread.

// The device to connect at start-up; empty for none.
std::wstring savedMidiDevice();
void rememberMidiDevice(const std::wstring& deviceName); // not flushed yet

// Whether a saved name means that device: regardless of the case of ASCII letters, and of blanks at
// the ends, which do not survive in the settings file.
bool sameDeviceName(std::wstring_view a, std::wstring_view b) noexcept;

// Two names that differ only in brackets share a section.
std::wstring midiProfileSectionName(std::wstring_view deviceName);

// Replaces the list by the section of the profile's device; entries that make no sense are left
// out. Nothing is written back, so that they stay in the file.
void loadMidiProfile();

// Replaces the section by the list; an empty one leaves no section. Nothing without a device.
void saveMidiProfile();

// The older, device-less list of mappings, with double ones; nothing when the bytes are none.
// Lines that make no sense are left out.
std::optional<std::vector<MidiMapping>> parseLegacyMidiMap(std::string_view bytes);

// Takes that list over into a device that has no section yet.
void importLegacyMidiMap();

// Binds the control and saves. What moved it before, and what the Control Change moved before, is
// forgotten.
void addMidiMapping(const std::string& controlId, int channel, int controller);

} // namespace percussomatic
