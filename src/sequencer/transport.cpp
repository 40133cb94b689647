#include "sequencer/transport.h"

#include "sequencer/panel_state.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "ui/redraw.h"

#include <algorithm>
#include <cwchar>

namespace percussomatic {

namespace {

void applyTempo() {
    if (sequencer().running && !sequencer().externalSync) {
        setClockTempo(sequencer().bpm);
    }
    updateSyncStatus();
    redrawTempoBox();
}

} // namespace

double rotaryToBpm(double t) noexcept {
    return t * (kMostBpm - kLeastBpm) + kLeastBpm;
}

double bpmToRotary(double bpm) noexcept {
    return std::clamp((bpm - kLeastBpm) / (kMostBpm - kLeastBpm), 0.0, 1.0);
}

void clockStart(WindowHandle window) {
    setClockWindow(window);
    if (sequencer().running && !sequencer().externalSync) {
        runClock(sequencer().bpm);
    } else {
        clockStop();
    }
}

void setTempoFromRotary(double t) {
    sequencer().bpm = rotaryToBpm(t);
    applyTempo();
}

void setTempoBpm(double bpm) {
    sequencer().bpm = std::clamp(bpm, kLeastBpm, kMostBpm);
    const double t = bpmToRotary(sequencer().bpm);
    panelState().tempo.value = t;
    panelState().tempo.dragStartValue = t;
    panelState().tempo.dragging = false;
    applyTempo();
    redrawControl(findControl("rotary_002"), Repaint::now);
}

std::wstring syncStatusText() {
    const Sequencer& now = sequencer();
    wchar_t text[128];
    if (!now.externalSync) {
        std::swprintf(text, std::size(text), L"SYNC: INTERNAL BPM: %.2f", now.bpm);
    } else if (now.midiClockSeen && now.midiBpm > 0.0) {
        std::swprintf(text, std::size(text), L"SYNC: MIDI CLOCK BPM: %.2f", now.midiBpm);
    } else {
        return L"SYNC: MIDI CLOCK Waiting for clock...";
    }
    return text;
}

void updateSyncStatus() {
    showSyncStatus(sequencer().externalSync, syncStatusText());
}

} // namespace percussomatic
