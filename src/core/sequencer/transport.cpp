// SPDX-License-Identifier: MIT
#include "sequencer/transport.h"

#include "audio/sound_engine.h"
#include "panel/control_names.h"
#include "panel/panel_state.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "tool_windows.h"

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

void onStepTick() {
    Sequencer& now = sequencer();
    if (!now.running) {
        return;
    }
    const std::uint32_t old = now.currentStep;
    now.currentStep = (old + 1) % now.sequenceLength;
    triggerStep(now.currentStep);
    updateBeatLamp();
    redrawCurrentColumn(old);
    redrawCurrentColumn(now.currentStep);
    flushPainting();
}

void onClockTick() {
    if (!sequencer().externalSync) {
        onStepTick();
    }
}

void toggleRunning() {
    Sequencer& now = sequencer();
    const std::uint32_t old = now.currentStep;
    now.running = !now.running;
    if (now.running) {
        now.currentStep = 0;
        triggerStep(0);
    }
    clockStart(mainWindow());
    redrawControl(findControl(control::kStartStop), Repaint::later);
    updateBeatLamp();
    redrawCurrentColumn(old);
    redrawCurrentColumn(now.currentStep);
    flushPainting();
}

void toggleEditMode() {
    Sequencer& now = sequencer();
    now.editMode = !now.editMode;
    // After power-off the output stays muted during the second until the program ends.
    soundEngine().outputMuted = now.editMode || panelState().powerOffPending ? 1 : 0;
    if (now.editMode) {
        soundEngine().stopAllVoicesRequest = 1;
    }
    redrawControl(findControl(control::kEdit), Repaint::later);
    updateBeatLamp();
    for (int line = 0; line < kLineCount; ++line) {
        redrawSetSteps(line);
    }
    flushPainting();
}

void switchSoundOff() {
    panelState().powerOffPending = true;
    soundEngine().outputMuted = 1;
    soundEngine().stopAllVoicesRequest = 1;
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
    sequencer().bpm = std::clamp(bpm, kMinBpm, kMaxBpm);
    const double t = bpmToRotary(sequencer().bpm);
    panelState().tempo.value = t;
    panelState().tempo.dragStartValue = t;
    panelState().tempo.dragging = false;
    applyTempo();
    redrawControl(findControl(control::kTempoRotary), Repaint::now);
}

void applyRotary(int index) {
    const RotaryState* rotary = rotaryState(index);
    if (rotary == &panelState().tempo) {
        setTempoFromRotary(rotary->value);
    } else if (rotary != nullptr) {
        soundEngine().setMasterVolume(static_cast<float>(rotary->value * rotary->value));
    }
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
