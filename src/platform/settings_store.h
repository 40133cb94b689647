// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace percussomatic {

// The settings file: sections of keys and values. GUI thread.

// Path of the settings file, next to the program. The first write creates it.
const std::filesystem::path& settingsFile();

// Keys of a section in file order, as many as fit into 32,768 characters. Empty if the section or
// the file does not exist.
std::vector<std::wstring> settingKeys(const std::wstring& section);

// Whether the section has any key. Cheaper than settingKeys().
bool sectionHasKeys(const std::wstring& section);

// One value, truncated to bufferCharacters - 1 characters; empty if absent. Leading and trailing
// blanks of a value are not preserved.
std::wstring readSetting(const std::wstring& section, const std::wstring& key,
                         std::size_t bufferCharacters);

// Failures are not reported. A value that the file's encoding cannot represent converts the file to
// another encoding first.
void writeSetting(const std::wstring& section, const std::wstring& key, const std::wstring& value);
void deleteSettings(const std::wstring& section); // all keys and the section itself
void flushSettings();

// The bytes of the older mapping file, which does not distinguish devices; nullopt if absent.
std::optional<std::string> readLegacyMidiMap();

} // namespace percussomatic
