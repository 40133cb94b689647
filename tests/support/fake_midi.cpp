// SPDX-License-Identifier: MIT
#include "support/fake_midi.h"

#include "midi/midi_state.h"
#include "settings_store.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace percussomatic {

namespace {

struct Setting {
    std::wstring section, key, value;
};

// In the order of the file; those of one section stand together.
std::vector<Setting>& settings() {
    static std::vector<Setting> all;
    return all;
}

auto findSetting(const std::wstring& section, const std::wstring& key) {
    return std::find_if(settings().begin(), settings().end(), [&](const Setting& each) {
        return each.section == section && each.key == key;
    });
}

} // namespace

FakeMidi& fakeMidi() {
    static FakeMidi midi;
    return midi;
}

std::wstring settingsText() {
    std::wostringstream text;
    std::wstring section;
    for (const Setting& each : settings()) {
        if (each.section != section) {
            section = each.section;
            text << L"[" << section << L"]\n";
        }
        text << each.key << L"=" << each.value << L"\n";
    }
    return text.str();
}

void setSettingsText(const std::wstring& text) {
    settings().clear();
    std::wistringstream lines(text);
    std::wstring section;
    for (std::wstring line; std::getline(lines, line);) {
        if (line.starts_with(L'[')) {
            section = line.substr(1, line.size() - 2);
        } else {
            const std::size_t equals = line.find(L'=');
            settings().push_back({section, line.substr(0, equals), line.substr(equals + 1)});
        }
    }
}

FreshMidi::FreshMidi() {
    resetMidiState();
    fakeMidi() = {};
    settings().clear();
}

std::vector<std::wstring> settingKeys(const std::wstring& section) {
    std::vector<std::wstring> keys;
    for (const Setting& each : settings()) {
        if (each.section == section) {
            keys.push_back(each.key);
        }
    }
    return keys;
}

bool sectionHasKeys(const std::wstring& section) {
    return !settingKeys(section).empty();
}

std::wstring readSetting(const std::wstring& section, const std::wstring& key,
                         std::size_t bufferCharacters) {
    const auto found = findSetting(section, key);
    return found == settings().end() ? L"" : found->value.substr(0, bufferCharacters - 1);
}

void writeSetting(const std::wstring& section, const std::wstring& key, const std::wstring& value) {
    fakeMidi().flushed = false;
    if (const auto found = findSetting(section, key); found != settings().end()) {
        found->value = value;
        return;
    }
    const auto last = std::find_if(settings().rbegin(), settings().rend(),
                                   [&](const Setting& each) { return each.section == section; });
    const auto place = last == settings().rend() ? settings().end() : last.base();
    settings().insert(place, {section, key, value});
}

void deleteSettings(const std::wstring& section) {
    fakeMidi().flushed = false;
    std::erase_if(settings(), [&](const Setting& each) { return each.section == section; });
}

void flushSettings() {
    fakeMidi().flushed = true;
}

std::optional<std::string> readLegacyMidiMap() {
    return fakeMidi().legacyMap;
}

const std::filesystem::path& settingsFile() {
    static const std::filesystem::path none;
    return none;
}

} // namespace percussomatic
