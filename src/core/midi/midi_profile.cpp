// SPDX-License-Identifier: MIT
#include "midi/midi_profile.h"

#include "settings_store.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace percussomatic {

namespace {

constexpr wchar_t kGeneralSection[] = L"GENERAL", kLastDeviceKey[] = L"LastMidiDevice";
constexpr std::string_view kLegacyMagic = "LUMIVARDA_MIDI_MAP_V1";

std::wstring_view trimmed(std::wstring_view text) noexcept {
    constexpr std::wstring_view kBlanks = L" \t\r\n\v\f";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::wstring_view::npos
               ? std::wstring_view{}
               : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

wchar_t toLowerAscii(wchar_t c) noexcept {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

std::string lowBytes(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t c : text) {
        bytes.push_back(static_cast<char>(c & 0xFF));
    }
    return bytes;
}

// Removes an integer from the front, read like the C library's: leading blanks and a sign are
// accepted. Nullopt if there is none or it does not fit.
std::optional<int> takeNumber(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{}) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

std::optional<MidiMapping> checkedMapping(std::string_view id, std::optional<int> channel,
                                          std::optional<int> controller) {
    const auto inRange = [](std::optional<int> number, int count) {
        return number.has_value() && *number >= 0 && *number < count;
    };
    if (!inRange(channel, kMidiChannels) || !inRange(controller, kMidiControllers)) {
        return std::nullopt;
    }
    return MidiMapping{std::string(id), *channel, *controller};
}

// "0,21"; text after the second number is ignored.
std::optional<MidiMapping> parseSetting(const std::wstring& key, const std::wstring& value) {
    std::string ascii;
    for (const wchar_t c : value) {
        ascii.push_back(c > 0 && c < 0x80 ? static_cast<char>(c) : '?');
    }
    std::string_view rest = ascii;
    const std::optional<int> channel = takeNumber(rest);
    if (!rest.starts_with(',')) {
        return std::nullopt;
    }
    rest.remove_prefix(1);
    return checkedMapping(lowBytes(key), channel, takeNumber(rest));
}

// "rotary_002,0,21"; text after either number is ignored.
std::optional<MidiMapping> parseLegacyLine(std::string_view line) {
    const std::size_t first = line.find(',');
    const std::size_t second = first == std::string_view::npos ? first : line.find(',', first + 1);
    if (second == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view channel = line.substr(first + 1, second - first - 1);
    std::string_view controller = line.substr(second + 1);
    return checkedMapping(line.substr(0, first), takeNumber(channel), takeNumber(controller));
}

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (end == std::string_view::npos) {
        text = {};
        return line;
    }
    text.remove_prefix(end + 1);
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

} // namespace

std::wstring savedMidiDevice() {
    constexpr std::size_t kNameCharacters = 512;
    return readSetting(kGeneralSection, kLastDeviceKey, kNameCharacters);
}

void rememberMidiDevice(const std::wstring& deviceName) {
    writeSetting(kGeneralSection, kLastDeviceKey, deviceName);
}

bool sameDeviceName(std::wstring_view a, std::wstring_view b) noexcept {
    a = trimmed(a);
    b = trimmed(b);
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](wchar_t x, wchar_t y) { return toLowerAscii(x) == toLowerAscii(y); });
}

std::wstring midiProfileSectionName(std::wstring_view deviceName) {
    // The settings file does not preserve blanks at the end of a section name.
    const std::wstring_view kept = deviceName.substr(0, deviceName.find_last_not_of(L' ') + 1);
    std::wstring name(kept.empty() ? L"Unknown MIDI Device" : kept);
    for (wchar_t& c : name) {
        if (c == L'[' || c == L']' || c == L'\r' || c == L'\n') {
            c = L'_';
        }
    }
    return L"DEVICE:" + name;
}

void loadMidiProfile() {
    constexpr std::size_t kValueCharacters = 128;
    MidiState& midi = midiState();
    midi.mappings.clear();
    if (midi.profileDeviceName.empty()) {
        return;
    }
    const std::wstring section = midiProfileSectionName(midi.profileDeviceName);
    for (const std::wstring& key : settingKeys(section)) {
        if (auto mapping = parseSetting(key, readSetting(section, key, kValueCharacters))) {
            midi.mappings.push_back(std::move(*mapping));
        }
    }
}

void saveMidiProfile() {
    const MidiState& midi = midiState();
    if (midi.profileDeviceName.empty()) {
        return;
    }
    const std::wstring section = midiProfileSectionName(midi.profileDeviceName);
    rememberMidiDevice(midi.profileDeviceName);
    deleteSettings(section);
    for (const MidiMapping& each : midi.mappings) {
        writeSetting(section, {each.controlId.begin(), each.controlId.end()},
                     std::to_wstring(each.channel) + L"," + std::to_wstring(each.controller));
    }
    flushSettings();
}

std::optional<std::vector<MidiMapping>> parseLegacyMidiMap(std::string_view bytes) {
    if (takeLine(bytes) != kLegacyMagic) {
        return std::nullopt;
    }
    std::vector<MidiMapping> mappings;
    while (!bytes.empty()) {
        if (auto mapping = parseLegacyLine(takeLine(bytes))) {
            mappings.push_back(std::move(*mapping));
        }
    }
    return mappings;
}

void importLegacyMidiMap() {
    MidiState& midi = midiState();
    if (midi.profileDeviceName.empty() ||
        sectionHasKeys(midiProfileSectionName(midi.profileDeviceName))) {
        return;
    }
    const std::optional<std::string> file = readLegacyMidiMap();
    if (!file.has_value()) {
        return;
    }
    auto mappings = parseLegacyMidiMap(*file);
    if (!mappings.has_value()) {
        return;
    }
    midi.mappings = std::move(*mappings);
    if (!midi.mappings.empty()) {
        saveMidiProfile();
    }
}

void addMidiMapping(const std::string& controlId, int channel, int controller) {
    MidiState& midi = midiState();
    std::erase_if(midi.mappings, [&](const MidiMapping& each) {
        return each.controlId == controlId ||
               (each.channel == channel && each.controller == controller);
    });
    midi.mappings.push_back({controlId, channel, controller});
    saveMidiProfile();
}

} // namespace percussomatic
