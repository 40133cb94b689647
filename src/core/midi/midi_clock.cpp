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

void showLeader() {
    updateSyncStatus();
    redrawTempoBox();
}

// The tempo follows each interval between two pulses only by an eighth or so, which evens out their
// jitter. A pause is an interval like any other.
void measureTempo(std::int64_t now) {
    constexpr double kNsPerSecond = 1e9;
    constexpr double kMinSeconds = 0.0001; // two pulses closer than this are one gone astray
    constexpr double kKept = 0.88, kTaken = 0.12;
    const std::int64_t last = midiState().lastClockTime;
    midiState().lastClockTime = now;
    if (last < 1) {
        return;
    }
    const double seconds = static_cast<double>(now - last) / kNsPerSecond;
    if (seconds > kMinSeconds) {
        double& bpm = sequencer().midiBpm;
        const double measured = 60.0 / (seconds * kPulsesPerBeat);
        bpm = bpm > 0.0 ? kKept * bpm + kTaken * measured : measured;
    }
}

// After every change of the transport by MIDI.
void settleTransport() {
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
    showLeader();
}

void followMidiClock() {
    sequencer().externalSync = true;
    resetMidiClock();
    clockStop();
    showLeader();
}

void resetMidiClock() noexcept {
    midiState().clockTickCount = 0;
    midiState().lastClockTime = 0;
    sequencer().midiClockSeen = false;
    sequencer().midiBpm = 0.0;
}

void midiClockPulse() {
    Sequencer& now = sequencer();
    measureTempo(counterNs());
    now.midiClockSeen = true;
    // The step sounds before the tempo is painted.
    if (now.externalSync && now.running && ++midiState().clockTickCount == kPulsesPerStep) {
        midiState().clockTickCount = 0;
        onStepTick();
    }
    showLeader();
}

void midiStart() {
    Sequencer& now = sequencer();
    if (!now.externalSync) {
        return;
    }
    const std::uint32_t old = now.currentStep;
    now.running = true;
    now.currentStep = 0;
    triggerStep(0);
    redrawCurrentColumn(old);
    redrawCurrentColumn(0);
    settleTransport();
}

void midiContinue() {
    Sequencer& now = sequencer();
    if (!now.externalSync) {
        return;
    }
    now.running = true;
    redrawCurrentColumn(now.currentStep);
    settleTransport();
}

void midiStop() {
    Sequencer& now = sequencer();
    if (!now.externalSync || !now.running) {
        return;
    }
    now.running = false;
    redrawCurrentColumn(now.currentStep);
    settleTransport();
}

} // namespace percussomatic
