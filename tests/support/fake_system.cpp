// SPDX-License-Identifier: MIT
#include "support/fake_system.h"

#include "audio/sound_engine.h"
#include "card_saving.h"
#include "cards/card_file.h"
#include "cards/card_panel.h"
#include "main_window_handle.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "support/fake_screen.h"
#include "support/virtual_clock.h"
#include "system_time.h"
#include "tool_windows.h"
#include "user_messages.h"
#include "window_timers.h"

#include <array>

namespace percussomatic {

namespace {

// Loaded once: the engine only ever appends.
const std::array<std::int32_t, 2 * kLineCount>& tinyRecordings() {
    static const auto indices = [] {
        SampleBank& bank = soundEngine().samples;
        std::array<std::int32_t, 2 * kLineCount> loaded{};
        for (std::int32_t& index : loaded) {
            index = static_cast<std::int32_t>(bank.size());
            bank.push_back({kDeviceRateHz, {0.1f}, {0.1f}, true});
        }
        return loaded;
    }();
    return indices;
}

} // namespace

FakeSystem& fakeSystem() {
    static FakeSystem system;
    return system;
}

WindowHandle mainWindow() noexcept {
    return fakeSystem().window;
}

void startTimer(WindowTimer timer, unsigned periodMs) {
    fakeSystem().timers[timer] = periodMs;
}

void stopTimer(WindowTimer timer) {
    fakeSystem().timers.erase(timer);
}

std::uint32_t tickCountMs() noexcept {
    return fakeSystem().tickCountMs;
}

void showSyncStatus(bool externalSync, const std::wstring& text) {
    fakeSystem().externalSyncShown = externalSync;
    fakeSystem().syncStatus = text;
}

void showLearnStatus(const std::wstring& text) {
    fakeSystem().learnLine = text;
}

void refreshFromEngine() {
    recordRequest("effects window");
}

void showProblem(const std::wstring& text) {
    fakeSystem().problems.push_back(text);
}

void saveCardLater(const std::filesystem::path& path, const std::string& text) {
    const SaveResult result = saveCardFile(path, text);
    if (result != SaveResult::saved) {
        showProblem(saveErrorText(result, path));
    }
}

FreshInstrument::FreshInstrument() {
    resetVirtualClock();
    setClockWindow(nullptr);
    resetControlState();
    resetPanelState();
    resetSequencer();
    resetCardPanel();
    sequencer().sampleIndices = tinyRecordings();

    SoundEngine& engine = soundEngine();
    engine.outputMuted = 0;
    engine.stopAllVoicesRequest = 0;
    engine.deactivateAllVoices();
    engine.setMasterVolume(1.0f);

    fakeSystem() = {};
    fakeSystem().window = &fakeSystem();
    resetFakeScreen();
}

FreshInstrument::~FreshInstrument() {
    clockShutdown();
}

} // namespace percussomatic
