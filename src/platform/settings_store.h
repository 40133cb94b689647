// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace percussomatic {

// The settings file: sections of keys and values. GUI thread.

// Where the settings are kept, beside the program. The file is created with the first setting.
const std::filesystem::path& settingsFile();

// Keys of a section in the order of the file, as far as they fit a buffer of 32,768 characters.
// Empty if there is no such section or no file.
std::vector<std::wstring> settingKeys(const std::wstring& section);

// Whether the section has any key; a buffer of four characters is enough to tell.
bool sectionHasKeys(const std::wstring& section);

// One value, cut to bufferCharacters - 1 characters; empty if it is absent. The file does not keep
// blanks at the ends of a value.
std::wstring readSetting(const std::wstring& section, const std::wstring& key,
                         std::size_t bufferCharacters);

// Failures are silent: the setting stays in memory until the program ends. A text that the file's
// encoding cannot hold first changes the encoding.
void writeSetting(const std::wstring& section, const std::wstring& key, const std::wstring& value);
void deleteSettings(const std::wstring& section); // all keys and the section itself
void flushSettings();

// The bytes of the older mapping list, which did not tell devices apart; nullopt if absent.
std::optional<std::string> readLegacyMidiMap();

} // namespace percussomatic
