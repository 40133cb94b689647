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

// "Percussomatic.ini" in the program's folder, accessed by the system's private-profile functions.

constexpr char kByteOrderMark[] = "\xFF\xFE"; // UTF-16, little-endian

// The program's folder; the working directory if that cannot be determined.
std::filesystem::path settingsFolder() {
    constexpr DWORD kPathCharacters = 260;
    std::array<wchar_t, kPathCharacters> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), kPathCharacters);
    if (length < 1 || length >= kPathCharacters) {
        return std::filesystem::current_path();
    }
    return std::filesystem::path(path.data()).parent_path();
}

// An empty string if the file does not exist; nullopt if it cannot be read completely.
std::optional<std::string> readBytes(const std::filesystem::path& path) {
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

// Whether the system's 8-bit code page has every character of the text. An 8-bit file replaces any
// other character by a question mark.
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

std::wstring toWide(const std::string& bytes) {
    const int length = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    const int converted = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(), length);
    return text.substr(0, static_cast<unsigned>(converted));
}

// Converts the settings file to UTF-16, or creates an empty one; the private-profile functions keep
// that encoding. On failure returns false and leaves the file unchanged.
bool convertToUtf16() {
    const std::optional<std::string> bytes = readBytes(settingsFile());
    if (!bytes) {
        return false;
    }
    if (bytes->starts_with(kByteOrderMark)) {
        return true;
    }
    const std::wstring text = bytes->empty() ? std::wstring() : toWide(*bytes);
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
        if (!convertToUtf16()) {
            return; // no entry is better than question marks
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
    return readBytes(path);
}

} // namespace percussomatic
