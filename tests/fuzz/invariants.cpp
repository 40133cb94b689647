#include "fuzz/invariants.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "sequencer/lamps.h"

#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "fuzz/fuzzing.h"
#include "input/panel_controls.h"
#include "midi/midi_glide.h"
#include "midi/midi_state.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "support/fake_system.h"

#include <algorithm>
#include <mutex>

namespace percussomatic::fuzz {

namespace {

void checkPanel() {
    const auto within = [](double value) { return value >= 0.0 && value <= 1.0; };
    const auto& offsets = controlState().sliderOffset;
    require(std::all_of(offsets.begin(), offsets.end(),
                        [](std::uint32_t offset) { return offset <= kSliderTravel; }),
            "sliders stand at 0 to 650");
    require(within(panelState().master.value) && within(panelState().tempo.value),
            "rotaries stand at 0 to 1");
    const auto volume = static_cast<float>(panelState().master.value * panelState().master.value);
    require(panelState().powerOffPending || soundEngine().masterVolume == volume,
            "the volume follows its rotary");
    const bool mute = sequencer().editMode || panelState().powerOffPending;
    require((soundEngine().outputMuted != 0) == mute, "edit mode and only that is silent");
}

void checkSequencer() {
    const Sequencer& now = sequencer();
    require(now.currentStep < kStepCount &&
                supportedLength(now.sequenceLength) == now.sequenceLength,
            "step and length exist");
    require(now.bpm >= kMinBpm && now.bpm <= kMaxBpm, "the tempo is within 40 and 240");
    require(now.beatLampShown == beatLampLit(), "the beat lamp shows what it should");
    const std::lock_guard lock(stepClock().mutex);
    const bool ticking = now.running && !now.externalSync;
    require(stepClock().clockRunning == ticking, "the step clock runs when it leads");
    require(!ticking || stepClock().clockBpm == now.bpm, "in the tempo that is set");
}

void checkMidi() {
    const auto& all = midiState().mappings;
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            require(all[i].controlId != all[j].controlId, "no control has two bindings");
            require(all[i].channel != all[j].channel || all[i].controller != all[j].controller,
                    "no controller has two bindings");
        }
    }
    const auto& targets = midiState().midiTargetValue;
    const bool gliding = std::any_of(targets.begin(), targets.end(),
                                     [](double target) { return target != kNoMidiTarget; });
    require(fakeSystem().timers.contains(WindowTimer::midiGlide) == gliding,
            "the glide's timer runs while something glides");
    require(midiState().clockTickCount < 6, "six pulses are a step");
}

void checkCardsAndVoices() {
    const CardPanel& cards = cardPanel();
    require(cards.dialogSlot >= 0 && cards.dialogSlot < kCardSlots && cards.columnsLoaded >= 0 &&
                cards.columnsLoaded <= kStepCount,
            "slot and column exist");
    require(fakeSystem().timers.contains(WindowTimer::cardInsertion) == cards.insertingCard,
            "the reader's timer runs while a card is read");
    const SoundEngine& engine = soundEngine();
    for (const Voice& voice : engine.voices) {
        require(!voice.active ||
                    (voice.sampleIndex >= 0 &&
                     static_cast<std::size_t>(voice.sampleIndex) < engine.samples.size()),
                "a voice that plays has a recording");
    }
}

} // namespace

void checkInvariants() {
    checkPanel();
    checkSequencer();
    checkMidi();
    checkCardsAndVoices();
}

} // namespace percussomatic::fuzz
