// SPDX-License-Identifier: MIT
#include "settings_store.h"

#include "files/file_replacement.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <iterator>

namespace percussomatic {

namespace {

// "Percussomatic.ini" beside the program, through the system's private-profile functions.

constexpr char kByteOrderMark[] = "\xFF\xFE"; // UTF-16, little-endian

// The program's folder; the working directory if the system does not tell it.
std::filesystem::path settingsFolder() {
    constexpr DWORD kPathCharacters = 260;
    std::array<wchar_t, kPathCharacters> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), kPathCharacters);
    if (length < 1 || length >= kPathCharacters) {
        return std::filesystem::current_path();
    }
    return std::filesystem::path(path.data()).parent_path();
}

// Empty for a file that does not exist; nullopt for one that cannot be read to its end.
std::optional<std::string> bytesOf(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error) && !error) {
        return std::string();
    }
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad() || bytes.size() != std::filesystem::file_size(path, error)) {
        return {};
    }
    return bytes;
}

// Whether the system's 8-bit code page has every character. Only such text survives in an 8-bit
// file; any other comes back with question marks.
bool fitsCodePage(const std::wstring& text) {
    if (text.empty() || GetACP() == CP_UTF8) {
        return true;
    }
    BOOL replaced = FALSE;
    const int length = static_cast<int>(text.size());
    return WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.data(), length, nullptr, 0,
                               nullptr, &replaced) > 0 &&
           replaced == FALSE;
}

std::wstring widened(const std::string& bytes) {
    const int length = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    text.resize(static_cast<std::size_t>(MultiByteToWideChar(
        CP_ACP, 0, bytes.data(), length, text.data(), static_cast<int>(text.size()))));
    return text;
}

// Converts an 8-bit settings file, or none, to UTF-16. From then on the private-profile functions
// keep that encoding. False leaves the file as it is.
bool makeWide() {
    const std::optional<std::string> bytes = bytesOf(settingsFile());
    if (!bytes) {
        return false;
    }
    if (bytes->starts_with(kByteOrderMark)) {
        return true;
    }
    const std::wstring text = bytes->empty() ? std::wstring() : widened(*bytes);
    FileReplacement file(settingsFile());
    file.write(kByteOrderMark);
    file.write({reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)});
    return file.commit() == SaveResult::saved;
}

} // namespace

const std::filesystem::path& settingsFile() {
    static const std::filesystem::path path = settingsFolder() / "Percussomatic.ini";
    return path;
}

std::vector<std::wstring> settingKeys(const std::wstring& section) {
    constexpr DWORD kCharacters = 32768;
    std::wstring list(kCharacters, L'\0');
    list.resize(GetPrivateProfileStringW(section.c_str(), nullptr, L"", list.data(), kCharacters,
                                         settingsFile().c_str()));
    std::vector<std::wstring> keys;
    for (std::size_t begin = 0; begin < list.size();) {
        const std::size_t end = std::min(list.find(L'\0', begin), list.size());
        keys.push_back(list.substr(begin, end - begin));
        begin = end + 1;
    }
    return keys;
}

bool sectionHasKeys(const std::wstring& section) {
    std::array<wchar_t, 4> probe{};
    return GetPrivateProfileStringW(section.c_str(), nullptr, L"", probe.data(),
                                    static_cast<DWORD>(probe.size()), settingsFile().c_str()) > 0;
}

std::wstring readSetting(const std::wstring& section, const std::wstring& key,
                         std::size_t bufferCharacters) {
    std::wstring value(bufferCharacters, L'\0');
    value.resize(GetPrivateProfileStringW(section.c_str(), key.c_str(), L"", value.data(),
                                          static_cast<DWORD>(value.size()),
                                          settingsFile().c_str()));
    return value;
}

void writeSetting(const std::wstring& section, const std::wstring& key, const std::wstring& value) {
    if (!fitsCodePage(section) || !fitsCodePage(key) || !fitsCodePage(value)) {
        flushSettings();
        if (!makeWide()) {
            return; // better no entry in the file than question marks; the value stays in memory
        }
    }
    WritePrivateProfileStringW(section.c_str(), key.c_str(), value.c_str(), settingsFile().c_str());
}

void deleteSettings(const std::wstring& section) {
    WritePrivateProfileStringW(section.c_str(), nullptr, nullptr, settingsFile().c_str());
}

void flushSettings() {
    WritePrivateProfileStringW(nullptr, nullptr, nullptr, settingsFile().c_str());
}

std::optional<std::string> readLegacyMidiMap() {
    const std::filesystem::path path = settingsFile().parent_path() / "MidiMappings.ini";
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return {};
    }
    return bytesOf(path);
}

} // namespace percussomatic
