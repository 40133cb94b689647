// SPDX-License-Identifier: MIT
#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "fuzz/instrument.h"
#include "midi/midi_glide.h"
#include "midi/midi_state.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "sequencer/lamps.h"
#include "sequencer/step_clock.h"

#include <algorithm>
#include <mutex>

namespace percussomatic::fuzz {

namespace {

void checkPanel() {
    const PanelState& panel = panelState();
    const SoundEngine& engine = soundEngine();
    const auto isUnit = [](double value) { return value >= 0.0 && value <= 1.0; };
    require(std::ranges::max(controlState().sliderOffset) <= kSliderTravel,
            "sliders stay within their travel");
    require(isUnit(panel.master.value) && isUnit(panel.tempo.value), "rotaries stay within 0 to 1");
    const auto volume = static_cast<float>(panel.master.value * panel.master.value);
    require(panel.powerOffPending || engine.masterVolume == volume,
            "the volume is the square of its rotary");
    const bool mute = sequencer().editMode || panel.powerOffPending;
    require((engine.outputMuted != 0) == mute, "the output is muted in edit mode and at power off");
    for (const Voice& voice : engine.voices) {
        require(!voice.active ||
                    static_cast<std::size_t>(voice.sampleIndex) < engine.samples.size(),
                "an active voice has a recording");
    }
}

void checkSequencer() {
    const Sequencer& now = sequencer();
    require(now.currentStep < kStepCount &&
                supportedLength(now.sequenceLength) == now.sequenceLength,
            "the step and the length exist");
    require(now.bpm >= kMinBpm && now.bpm <= kMaxBpm, "the tempo is in range");
    require(now.beatLampShown == beatLampLit(), "the beat lamp is up to date");
    const std::lock_guard lock(stepClock().mutex);
    const bool ticking = now.running && !now.externalSync;
    require(stepClock().clockRunning == ticking, "the step clock runs if it leads");
    require(!ticking || stepClock().clockBpm == now.bpm, "the step clock has the set tempo");
}

void checkMidi() {
    const auto& all = midiState().mappings;
    for (auto a = all.begin(); a != all.end(); ++a) {
        require(std::none_of(all.begin(), a,
                             [&](const MidiMapping& b) {
                                 return a->controlId == b.controlId ||
                                        (a->channel == b.channel && a->controller == b.controller);
                             }),
                "no control and no controller has two mappings");
    }
    const bool gliding = std::ranges::any_of(midiState().midiTargetValue,
                                             [](double target) { return target != kNoMidiTarget; });
    require(fakeSystem().timers.contains(WindowTimer::midiGlide) == gliding,
            "the timer of the glides runs while one is pending");
    require(midiState().clockTickCount < 6, "a step has six pulses");
}

void checkCards() {
    const CardPanel& cards = cardPanel();
    require(cards.dialogSlot >= 0 && cards.dialogSlot < kCardSlots && cards.columnsLoaded >= 0 &&
                cards.columnsLoaded <= kStepCount,
            "the slot and the column exist");
    require(fakeSystem().timers.contains(WindowTimer::cardInsertion) == cards.insertingCard,
            "the timer of the reader runs while a card is inserted");
}

} // namespace

void checkInvariants() {
    checkPanel();
    checkSequencer();
    checkMidi();
    checkCards();
}

} // namespace percussomatic::fuzz
