// SPDX-License-Identifier: MIT
#include "support/fake_system.h"

#include "audio/effect_controls.h"
#include "audio/sound_engine.h"
#include "card_saving.h"
#include "cards/card_file.h"
#include "cards/card_panel.h"
#include "main_window_handle.h"
#include "midi/midi_state.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "settings_store.h"
#include "support/virtual_clock.h"
#include "system_sleep.h"
#include "tool_windows.h"
#include "user_messages.h"

#include <algorithm>
#include <array>
#include <set>
#include <sstream>
#include <utility>

namespace percussomatic {

namespace {

using Settings =
    std::map<std::wstring, std::map<std::wstring, std::wstring>>; // section, key, value

Settings settings;

// Everything about a control that can change.
struct Look {
    bool lit = false;
    std::uint32_t sliderOffset = 0;
    double value = 0.0; // of a rotary or the tempo box

    bool operator==(const Look&) const = default;
};

constexpr int kTempoBox = kControlCount, kEffectsBox = kTempoBox + 1, kAreaCount = kTempoBox + 2;

struct FakeScreen {
    std::array<Look, kAreaCount> painted;
    std::set<int> marked;
    Names requests;
} screen;

std::string nameOf(int index) {
    return index == kEffectsBox ? "effects box"
           : index == kTempoBox ? "tempo box"
                                : std::string(controlRow(index).name);
}

Look lookOf(int index) {
    if (index == kTempoBox) {
        const Sequencer& now = sequencer();
        const bool midiTempo = now.externalSync && now.midiClockSeen && now.midiBpm > 0.0;
        return {.lit = now.externalSync, .value = midiTempo ? now.midiBpm : now.bpm};
    }
    if (index == kEffectsBox) {
        return {.lit = soundEngine().isEffectEnabled()};
    }
    const RotaryState* rotary = rotaryState(index);
    return {.lit = controlLit(index),
            .sliderOffset = controlState().offset(index),
            .value = rotary == nullptr ? 0.0 : rotary->value};
}

void paintMarked() {
    for (const int index : screen.marked) {
        screen.painted[static_cast<std::size_t>(index)] = lookOf(index);
    }
    screen.marked.clear();
}

void paintAll() {
    for (int index = 0; index < kAreaCount; ++index) {
        screen.marked.insert(index);
    }
    paintMarked();
}

// An immediate paint includes everything marked before.
void request(int index, Repaint when, const std::string& text) {
    screen.requests.push_back(text);
    screen.marked.insert(index);
    if (when == Repaint::now) {
        paintMarked();
    }
}

} // namespace

FakeSystem& fakeSystem() {
    static FakeSystem system;
    return system;
}

WindowHandle mainWindow() noexcept {
    return &fakeSystem();
}

void startTimer(WindowTimer timer, unsigned periodMs) {
    fakeSystem().timers[timer] = periodMs;
}

void stopTimer(WindowTimer timer) {
    fakeSystem().timers.erase(timer);
}

void keepSystemAwake(bool awake) noexcept {
    fakeSystem().awake = awake;
}

void showSyncStatus(bool /*externalSync*/, const std::wstring& text) {
    fakeSystem().syncStatus = text;
}

void showLearnStatus(const std::wstring& text) {
    fakeSystem().learnLine = text;
}

void refreshFromEngine() {
    fakeSystem().shownSend = barPosition(soundEngine(), kSendBarId);
    screen.requests.emplace_back("effects window");
}

void showProblem(const std::wstring& text) {
    fakeSystem().problems.push_back(text);
}

void saveCardLater(const PendingCard& card) {
    if (const std::wstring problem = writeCard(fakeSystem().cardWriter, card); !problem.empty()) {
        showProblem(problem);
    }
}

void showSavingProblems() {}

void finishSaving() {}

const std::filesystem::path& settingsFile() {
    static const std::filesystem::path none;
    return none;
}

std::vector<std::wstring> settingKeys(const std::wstring& section) {
    std::vector<std::wstring> keys;
    for (const auto& [key, value] : settings[section]) {
        keys.push_back(key);
    }
    return keys;
}

bool sectionHasKeys(const std::wstring& section) {
    return !settings[section].empty();
}

std::wstring readSetting(const std::wstring& section, const std::wstring& key,
                         std::size_t bufferCharacters) {
    return settings[section][key].substr(0, bufferCharacters - 1);
}

void writeSetting(const std::wstring& section, const std::wstring& key, const std::wstring& value) {
    fakeSystem().flushed = false;
    if (fakeSystem().writable) {
        settings[section][key] = value;
    }
}

void deleteSettings(const std::wstring& section) {
    fakeSystem().flushed = false;
    settings.erase(section);
}

void flushSettings() {
    fakeSystem().flushed = true;
}

std::optional<std::string> readLegacyMidiMap() {
    return fakeSystem().legacyMap;
}

std::wstring settingsText() {
    std::wstring text;
    for (const auto& [section, values] : settings) {
        text += values.empty() ? L"" : L"[" + section + L"]\n";
        for (const auto& [key, value] : values) {
            text.append(key).append(L"=").append(value).append(L"\n");
        }
    }
    return text;
}

void setSettingsText(const std::wstring& text) {
    settings.clear();
    std::wistringstream lines(text);
    std::wstring section;
    for (std::wstring line; std::getline(lines, line);) {
        if (line.starts_with(L'[')) {
            section = line.substr(1, line.size() - 2);
        } else {
            const std::size_t equals = line.find(L'=');
            settings[section][line.substr(0, equals)] = line.substr(equals + 1);
        }
    }
}

void redrawControl(int index, Repaint when) {
    if (index != kNoControl) {
        request(index, when, nameOf(index) + (when == Repaint::now ? " now" : " later"));
    }
}

void redrawSlider(int index, std::uint32_t oldOffset) {
    request(index, Repaint::now, nameOf(index) + " from " + std::to_string(oldOffset));
}

void redrawTempoBox() {
    request(kTempoBox, Repaint::later, nameOf(kTempoBox));
}

void redrawEffectsBox() {
    request(kEffectsBox, Repaint::later, nameOf(kEffectsBox));
}

void redrawMidiBoxes() {
    screen.requests.emplace_back("midi boxes");
}

void redrawPanel() {
    screen.requests.emplace_back("panel");
    paintAll();
}

void redrawCardDialog() {
    screen.requests.emplace_back("card dialog");
}

void redrawReader() {
    screen.requests.emplace_back("reader");
}

void flushPainting() {
    screen.requests.emplace_back("flush");
    paintMarked();
}

Names takeRedraws() {
    return std::exchange(screen.requests, {});
}

Names staleControls() {
    paintMarked();
    Names stale;
    for (int index = 0; index < kAreaCount; ++index) {
        if (screen.painted[static_cast<std::size_t>(index)] != lookOf(index)) {
            stale.push_back(nameOf(index));
        }
    }
    return stale;
}

void resetFakeScreen() {
    screen = {};
    paintAll();
}

FreshInstrument::FreshInstrument() {
    resetVirtualClock();
    setClockWindow(nullptr);
    resetControlState();
    resetPanelState();
    resetSequencer();
    resetCardPanel();
    resetMidiState();
    settings.clear();
    SoundEngine& engine = soundEngine();
    static const std::size_t first = engine.samples.size();
    for (std::size_t i = 0; i < kInstrumentCount; ++i) {
        if (engine.samples.size() < first + kInstrumentCount) { // loaded once and kept
            engine.samples.push_back({kDeviceRateHz, std::vector{0.1f}, std::vector{0.1f}, true});
        }
        sequencer().sampleIndices[i] = static_cast<std::int32_t>(first + i);
    }
    engine.outputMuted = 0;
    engine.stopAllVoicesRequest = 0;
    engine.deactivateAllVoices();
    engine.setMasterVolume(1.0f);

    fakeSystem() = {};
    resetFakeScreen();
}

FreshInstrument::~FreshInstrument() {
    clockShutdown();
}

} // namespace percussomatic
