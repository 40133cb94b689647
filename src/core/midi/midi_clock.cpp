// SPDX-License-Identifier: MIT
#include "midi/midi_clock.h"

#include "midi/midi_state.h"
#include "panel/control_names.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "system_time.h"

namespace percussomatic {

namespace {

constexpr double kPulsesPerBeat = 24.0;
constexpr std::uint32_t kPulsesPerStep = 6;

void showClockSource() {
    updateSyncStatus();
    redrawTempoBox();
}

// Exponential smoothing evens out the jitter of the pulses. A pause counts as one long interval.
void measureTempo(std::int64_t now) {
    constexpr double kNsPerSecond = 1e9;
    constexpr double kMinSeconds = 0.0001; // closer pulses are not a tempo
    constexpr double kOldWeight = 0.88, kNewWeight = 0.12;
    const std::int64_t last = midiState().lastClockTime;
    midiState().lastClockTime = now;
    if (last < 1) {
        return;
    }
    const double seconds = static_cast<double>(now - last) / kNsPerSecond;
    if (seconds > kMinSeconds) {
        double& bpm = sequencer().midiBpm;
        const double measured = 60.0 / (seconds * kPulsesPerBeat);
        bpm = bpm > 0.0 ? kOldWeight * bpm + kNewWeight * measured : measured;
    }
}

// Common to Start, Continue and Stop.
void finishTransportChange() {
    midiState().clockTickCount = 0;
    clockStop();
    redrawControl(findControl(control::kStartStop), Repaint::later);
    updateBeatLamp();
    flushPainting();
}

} // namespace

void followInternalClock() {
    sequencer().externalSync = false;
    resetMidiClock();
    clockStart(mainWindow());
    showClockSource();
}

void followMidiClock() {
    sequencer().externalSync = true;
    resetMidiClock();
    clockStop();
    showClockSource();
}

void resetMidiClock() noexcept {
    midiState().clockTickCount = 0;
    midiState().lastClockTime = 0;
    sequencer().midiClockSeen = false;
    sequencer().midiBpm = 0.0;
}

void midiClockPulse() {
    Sequencer& now = sequencer();
    const std::int64_t nowNs = counterNs();
    measureTempo(nowNs);
    now.midiClockSeen = true;
    // Trigger the step before spending time on painting the tempo.
    if (now.externalSync && now.running && ++midiState().clockTickCount == kPulsesPerStep) {
        midiState().clockTickCount = 0;
        onStepTick(nowNs);
    }
    showClockSource();
}

void midiStart() {
    Sequencer& now = sequencer();
    if (!now.externalSync) {
        return;
    }
    const std::uint32_t old = now.currentStep;
    setRunning(true);
    now.currentStep = 0;
    triggerStep(0, counterNs());
    redrawCurrentColumn(old);
    redrawCurrentColumn(0);
    finishTransportChange();
}

void midiContinue() {
    Sequencer& now = sequencer();
    if (!now.externalSync) {
        return;
    }
    setRunning(true);
    redrawCurrentColumn(now.currentStep);
    finishTransportChange();
}

void midiStop() {
    Sequencer& now = sequencer();
    if (!now.externalSync || !now.running) {
        return;
    }
    setRunning(false);
    redrawCurrentColumn(now.currentStep);
    finishTransportChange();
}

} // namespace percussomatic
