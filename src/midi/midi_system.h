#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace percussomatic {

// What MIDI asks of the system it runs on: implemented once over the private-profile functions of
// Win32 and once, in memory, by the native tests. GUI thread.

// Keys of a section of the settings file in the order of the file, as far as they fit a buffer of
// 32,768 characters. Empty when there is no such section or no such file.
std::vector<std::wstring> settingKeys(const std::wstring& section);

// Whether the section has any key: what a buffer of four characters is enough for.
bool sectionHasKeys(const std::wstring& section);

// One value, cut to bufferCharacters - 1 characters; empty when it is not there. Blanks at its ends
// have been lost on the way through the file.
std::wstring readSetting(const std::wstring& section, const std::wstring& key,
                         std::size_t bufferCharacters);

// Failures to write are silent: what is in memory goes on working. A text that the file cannot hold
// in its present encoding changes the file's encoding first.
void writeSetting(const std::wstring& section, const std::wstring& key, const std::wstring& value);
void deleteSettings(const std::wstring& section); // all keys, and the section itself
void flushSettings();

// The bytes of the older, device-less list of mappings; nothing when there is none.
std::optional<std::string> readLegacyMidiMap();

// Puts the text on the learn line, where that is on display at all.
void showLearnStatus(const std::wstring& text);

} // namespace percussomatic
