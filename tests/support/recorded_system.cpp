#include "support/recorded_system.h"

#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "cards/card_panel.h"
#include "cards/card_saver.h"
#include "sequencer/panel_state.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "support/recorded_screen.h"
#include "support/virtual_clock.h"
#include "ui/control_layout.h"

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

RecordedSystem& recordedSystem() {
    static RecordedSystem system;
    return system;
}

WindowHandle mainWindow() noexcept {
    return recordedSystem().window;
}

void startTimer(WindowTimer timer, unsigned periodMs) {
    recordedSystem().timers[timer] = periodMs;
}

void stopTimer(WindowTimer timer) {
    recordedSystem().timers.erase(timer);
}

std::uint32_t tickCountMs() noexcept {
    return recordedSystem().tickCountMs;
}

void showSyncStatus(bool externalSync, const std::wstring& text) {
    recordedSystem().externalSyncShown = externalSync;
    recordedSystem().syncStatus = text;
}

void showProblem(const std::wstring& text) {
    recordedSystem().problems.push_back(text);
}

void saveCardLater(const std::filesystem::path& path, const std::string& text) {
    const SaveResult result = saveCardFile(path, text);
    if (result != SaveResult::saved) {
        showProblem(saveFaultText(result, path));
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

    recordedSystem() = {};
    recordedSystem().window = &recordedSystem();
    resetRecordedScreen();
}

FreshInstrument::~FreshInstrument() {
    clockShutdown();
}

} // namespace percussomatic
