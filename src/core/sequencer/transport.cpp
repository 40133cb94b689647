// SPDX-License-Identifier: MIT
#include "sequencer/transport.h"

#include "audio/sound_engine.h"
#include "panel/control_names.h"
#include "panel/panel_state.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "system_sleep.h"
#include "system_time.h"
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

void onStepTick(std::int64_t dueNs) {
    Sequencer& now = sequencer();
    if (!now.running) {
        return;
    }
    const std::uint32_t old = now.currentStep;
    now.currentStep = (old + 1) % now.sequenceLength;
    triggerStep(now.currentStep, dueNs);
    updateBeatLamp();
    redrawCurrentColumn(old);
    redrawCurrentColumn(now.currentStep);
    flushPainting();
}

void onClockTick() {
    const std::int64_t dueNs = takeDeadline().value_or(counterNs());
    if (!sequencer().externalSync) {
        onStepTick(dueNs);
    }
}

void setRunning(bool running) {
    sequencer().running = running;
    keepSystemAwake(running);
}

void toggleRunning() {
    Sequencer& now = sequencer();
    const std::uint32_t old = now.currentStep;
    const std::int64_t pressedNs = counterNs();
    setRunning(!now.running);
    if (now.running) {
        now.currentStep = 0;
        triggerStep(0, pressedNs);
    }
    startClockAt(mainWindow(), pressedNs);
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

void startClockAt(WindowHandle window, std::int64_t startNs) {
    setClockWindow(window);
    if (sequencer().running && !sequencer().externalSync) {
        runClock(sequencer().bpm, startNs);
    } else {
        clockStop();
    }
}

void clockStart(WindowHandle window) {
    startClockAt(window, counterNs());
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
