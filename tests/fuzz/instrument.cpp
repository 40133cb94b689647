#include "fuzz/instrument.h"

#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "cards/card_panel.h"
#include "midi/midi_clock.h"
#include "midi/midi_connection.h"
#include "midi/midi_glide.h"
#include "midi/midi_learn.h"
#include "midi/midi_message.h"
#include "midi/midi_state.h"
#include "sequencer/front_panel.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/tempo_text.h"
#include "sequencer/transport.h"
#include "support/plain_engine.h"
#include "support/recorded_screen.h"
#include "support/virtual_clock.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace percussomatic::fuzz {

namespace {

struct Recording {
    std::uint32_t rateHz, frames;
    std::uint32_t soundingFrames; // the rest is silent
};

constexpr std::array<Recording, 2 * kLineCount> kRecordings{{
    {96000, 20000, 20000},
    {96000, 30000, 3000},
    {48000, 9000, 9000},
    {44100, 12000, 8000},
    {8000, 700, 700},
    {96000, 1, 1},
    {11025, 2, 2},
    {1000000, 50000, 50000},
    {1, 3, 2},
    {192000, 30000, 0},
    {47999, 5000, 5000},
    {48000, 14100, 100},
}};

// Beside the engine; what it does not know by itself is copied from there before each render.
plain::PlainEngine plainEngine;
bool plainTail = false; // its reverb holds something

Instrument::Indices loadRecordings() {
    Instrument::Indices indices{};
    std::uint32_t noise = 1;
    SampleBank& bank = soundEngine().samples;
    for (std::size_t i = 0; i < kRecordings.size(); ++i) {
        const auto& [rateHz, frames, soundingFrames] = kRecordings[i];
        Sample sample{rateHz, std::vector<float>(frames), std::vector<float>(frames), true};
        for (std::uint32_t frame = 0; frame < soundingFrames; ++frame) {
            for (std::vector<float>* plane : {&sample.left, &sample.right}) {
                noise = noise * 1664525 + 1013904223;
                (*plane)[frame] = static_cast<float>(static_cast<std::int32_t>(noise)) / 0x1p31f;
            }
        }
        indices[i] = static_cast<std::int32_t>(bank.size());
        bank.push_back(std::move(sample));
    }
    soundEngine().prepareForDevice();
    plainEngine.prepareForDevice();
    return indices;
}

// Once: the engine only ever appends.
const Instrument::Indices& loadedRecordings() {
    static const Instrument::Indices indices = loadRecordings();
    return indices;
}

void resetSound() {
    SoundEngine& engine = soundEngine();
    if (plainEngine.samples.size() != engine.samples.size()) {
        plainEngine.samples = engine.samples;
    }
    engine.voices = {};
    engine.setAutoStop(true, 1e-5f, 100, 50);
    engine.setEffectEnabled(false);
    selectPreset(0);
    for (std::uint32_t send = 0; send < kSendCount; ++send) {
        engine.setSend(send, 0.0f);
    }
}

// The plain engine's tail goes when the engine's has gone.
void clearPlainTail() {
    if (plainTail && !soundEngine().effectEnabled) {
        plainEngine.reverb.reset();
        plainTail = false;
    }
}

void copyToPlain(const SoundEngine& engine) {
    plainEngine.outputMuted = engine.outputMuted != 0;
    plainEngine.stopAllVoicesRequest = engine.stopAllVoicesRequest != 0;
    plainEngine.masterVolume = engine.masterVolume;
    plainEngine.setAutoStop(engine.autoStopEnabled, engine.silenceThreshold, engine.silenceHoldMs,
                            engine.minPlayMs);
    plainEngine.sends = engine.sends;
    plainEngine.effectEnabled = engine.effectEnabled;
    plainEngine.effectReturn = engine.effectReturn;
    plainEngine.reverb.roomSize = engine.effectRoomSize;
    plainEngine.reverb.damping = engine.effectDamping;
    plainEngine.reverb.width = engine.effectWidth;
    plainEngine.reverb.preDelayMs = engine.effectPreDelayMs;
    plainEngine.voices = engine.voices;
}

void render(std::uint32_t frames) {
    SoundEngine& engine = soundEngine();
    copyToPlain(engine);
    plainTail = plainTail || engine.effectEnabled;
    std::vector<std::int16_t> out(2 * std::size_t{frames}), expected(out.size());
    engine.renderBlock(out.data(), frames);
    plainEngine.renderBlock(expected.data(), frames);
    require(out == expected, "a render is what the plain engine renders");
    require(std::count(out.begin(), out.end(), std::numeric_limits<std::int16_t>::min()) == 0,
            "-32768 is never written");
    require(std::equal(engine.voices.begin(), engine.voices.end(), plainEngine.voices.begin(),
                       [](const Voice& a, const Voice& b) {
                           return a.active == b.active && a.position == b.position &&
                                  a.silentFrames == b.silentFrames &&
                                  a.playedFrames == b.playedFrames;
                       }),
            "voices stand where those of the plain engine do");
    for (std::size_t channel = 0; channel < 2; ++channel) {
        require(std::equal(engine.reverb.combs[channel].begin(), engine.reverb.combs[channel].end(),
                           plainEngine.reverb.combs[channel].begin(),
                           [](const auto& a, const auto& b) { return a.filterStore == b.lowPass; }),
                "the tail is the plain reverb's to the bit");
    }
}

void trigger(Input& input) {
    const int index = input.below(2 * kRecordings.size() + 4) - 2; // both ends are passed
    const auto gain = static_cast<float>(input.word()) * 0.001f;
    for (int voice = input.below(70); voice >= 0; --voice) {
        soundEngine().trigger(index, gain);
    }
}

// What the effects window can do, and the auto-stop.
void turnEffect(Input& input) {
    SoundEngine& engine = soundEngine();
    switch (input.below(5)) {
    case 0:
        engine.setEffectEnabled(input.flag());
        break;
    case 1:
        selectPreset(input.below(6) - 1);
        break;
    case 2:
    case 3: {
        const int bar = input.byte() % 24; // with some that are none
        moveBar(engine, bar < 14 ? kSendBarId + bar - 1 : kParameterBarId + bar - 14,
                input.below(130) - 10);
        break;
    }
    default: {
        const auto threshold = static_cast<float>(input.below(4)) * 1e-3f;
        const auto holdMs = static_cast<std::uint32_t>(input.below(16));
        const auto minMs = static_cast<std::uint32_t>(input.below(16));
        engine.setAutoStop(input.flag(), threshold, holdMs, minMs);
    }
    }
}

float cardValue(Input& input) {
    using Limits = std::numeric_limits<float>;
    constexpr std::array kOdd{Limits::quiet_NaN(),
                              Limits::infinity(),
                              -Limits::infinity(),
                              Limits::max(),
                              -1e-6f,
                              250.0f};
    const std::size_t value = input.byte();
    return value < kOdd.size() ? kOdd[value] : static_cast<float>(value) / 240.0f;
}

// Puts into the slot shown what a reader makes of a card with such values.
void fillCard(Input& input) {
    PunchCard card;
    std::uint32_t steps = 0;
    for (std::uint8_t& step : card.pattern.steps) {
        steps = steps > 3 ? steps >> 1 : 0x100U | input.byte(); // eight to a byte
        step = steps & 1;
    }
    card.masterVolume = cardValue(input);
    card.tempo = cardValue(input);
    card.sequenceLength = input.byte();
    std::generate(card.lineVolumes.begin(), card.lineVolumes.end(),
                  [&] { return cardValue(input); });
    std::generate(card.instruments.begin(), card.instruments.end(),
                  [&] { return input.byte() & 1; });
    card.effectEnabled = input.flag();
    card.effectPreset = input.word();
    for (float* value : {&card.effectReturn, &card.effectRoomSize, &card.effectDamping,
                         &card.effectWidth, &card.effectPreDelayMs}) {
        *value = cardValue(input);
    }
    std::generate(card.effectSends.begin(), card.effectSends.end(),
                  [&] { return cardValue(input); });
    const int slot = cardPanel().dialogSlot;
    const auto read = parsePunchCard(writePunchCard(card, slot));
    require(read.has_value(), "a written card is read");
    cardPanel().slots[static_cast<std::size_t>(slot)] = *read;
    cardPanel().slots[static_cast<std::size_t>(slot)].hasSettings = input.flag(); // not the oldest
}

// What has been written of the slot shown can be read again.
void checkFile() {
    PunchCard card;
    const std::filesystem::path path = cardFilePath(cardPanel().dialogSlot);
    require(!std::filesystem::exists(path) || loadCardFile(path, card), "a saved card is read");
}

std::wstring typed(Input& input) {
    std::wstring text;
    for (int length = input.below(16); length > 0; --length) {
        text.push_back(static_cast<wchar_t>(input.byte()));
    }
    return text;
}

void commandMidi(int number) {
    constexpr void (*kCommands[])() = {armMidiLearn,        clearMidiMappings,
                                       followInternalClock, followMidiClock,
                                       midiPortClosed,      [] { midiPortOpened(L"Keys"); }};
    kCommands[static_cast<std::size_t>(number) % std::size(kCommands)]();
}

void handleMessage(int status, Input& input) {
    const std::uint32_t first = input.byte(), second = input.byte();
    handleMidiMessage(static_cast<std::uint32_t>(status) | first << 8 | second << 16);
}

// As the main window's procedure has it. False when the program ends.
bool fireTimers() {
    for (const auto& [timer, period] : std::map(recordedSystem().timers)) {
        switch (timer) {
        case WindowTimer::powerOff:
            return false;
        case WindowTimer::cardInsertion:
            cardInsertionTick();
            if (cardPanel().cardInserted) {
                endGlides();
            }
            break;
        case WindowTimer::midiGlide:
            midiSmoothingTick();
            break;
        }
    }
    return true;
}

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
    require(now.currentStep < kStepCount && panelLength(now.sequenceLength) == now.sequenceLength,
            "step and length exist");
    require(now.bpm >= kLeastBpm && now.bpm <= kMostBpm, "the tempo is within 40 and 240");
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
    require(recordedSystem().timers.contains(WindowTimer::midiGlide) == gliding,
            "the glide's timer runs while something glides");
    require(midiState().clockTickCount < 6, "six pulses are a step");
}

void checkCardsAndVoices() {
    const CardPanel& cards = cardPanel();
    require(cards.dialogSlot >= 0 && cards.dialogSlot < kCardSlots && cards.columnsLoaded >= 0 &&
                cards.columnsLoaded <= kStepCount,
            "slot and column exist");
    require(recordedSystem().timers.contains(WindowTimer::cardInsertion) == cards.insertingCard,
            "the reader's timer runs while a card is read");
    const SoundEngine& engine = soundEngine();
    for (const Voice& voice : engine.voices) {
        require(!voice.active ||
                    (voice.sampleIndex >= 0 &&
                     static_cast<std::size_t>(voice.sampleIndex) < engine.samples.size()),
                "a voice that plays has a recording");
    }
}

// After every act.
void lookThrough() {
    takeRedraws();
    clearPlainTail();
    checkPanel();
    checkSequencer();
    checkMidi();
    checkCardsAndVoices();
}

} // namespace

Instrument::Instrument() : recordings_(loadedRecordings()), client_{1618, 1040} {
    sequencer().sampleIndices = recordings_;
    std::filesystem::remove_all("PunchCards");
    resetSound();
    clearPlainTail();
}

double Instrument::scale() const {
    return viewScale(client_.width, client_.height);
}

void Instrument::pass(std::int64_t ns) {
    passTimeTo(counterNs() + ns);
    recordedSystem().tickCountMs += static_cast<std::uint32_t>(ns / kNsPerMs);
    for (std::size_t ticks = takePostedTicks().size(); ticks > 0; --ticks) {
        onStepTick();
        require(!sequencer().running || sequencer().currentStep < sequencer().sequenceLength,
                "a tick leads to a step below the length");
    }
    ended_ = !fireTimers();
}

void Instrument::press(PixelPoint client, Input& input) {
    cursor_ = client;
    switch (panelCommandAt(client, cardPanelRects(client_))) {
    case PanelCommand::none:
        if (!learnClick(client, scale()) && !beginRotaryDrag(client, scale()) &&
            !beginSliderDrag(client, scale())) {
            pressControl(client, scale());
        }
        break;
    case PanelCommand::cards:
        toggleCardsDialog();
        break;
    case PanelCommand::previousCard:
        showPreviousCard();
        break;
    case PanelCommand::nextCard:
        showNextCard();
        break;
    case PanelCommand::title:
        setCardTitle(typed(input));
        checkFile();
        break;
    case PanelCommand::save:
        saveCard();
        checkFile();
        break;
    case PanelCommand::load:
        beginCardInsertion(client_);
        break;
    case PanelCommand::cancel:
        closeCardsDialog();
        break;
    case PanelCommand::tempo:
        if (const auto bpm = tempoOfText(typed(input)); bpm && !sequencer().externalSync) {
            setTempoBpm(*bpm);
        }
        break;
    default: // opens a window, or nothing happens
        break;
    }
}

void Instrument::move(int byX, int byY, bool fine) {
    cursor_ = {cursor_.x + byX, cursor_.y + byY};
    if (panelState().rotaryDragIndex != kNoControl) {
        dragRotary(cursor_.y, fine);
    } else if (panelState().sliderDragIndex != kNoControl) {
        dragSlider(cursor_.x, scale());
    }
}

void Instrument::play(std::uint32_t frames) {
    if (frames <= framesLeft_) {
        framesLeft_ -= frames;
        render(frames);
    }
}

void Instrument::perform(int number, Input& input) {
    constexpr LayoutSize kSizes[] = {{1618, 1040}, {400, 260}, {120, 90},
                                     {1, 1},       {0, 0},     {7995, 300}};
    const auto middle = [](const PixelRect& rect) {
        return PixelPoint{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    };
    switch (number) {
    case 0:
        press(middle(controlClientRect(input.below(kControlCount), scale())), input);
        break;
    case 1: {
        const int x = input.word();
        press({x, input.word()}, input);
        break;
    }
    case 2: {
        const int byX = input.word(), byY = input.word();
        move(byX, byY, input.flag());
        break;
    }
    case 3:
        releaseControls();
        endRotaryDrag();
        endSliderDrag();
        break;
    case 4: {
        const PixelRect rotary =
            controlClientRect(findControl(input.flag() ? "rotary_001" : "rotary_002"), scale());
        const int delta = input.word();
        turnWheel(middle(rotary), scale(), delta, input.flag());
        break;
    }
    case 5:
        pass(input.byte() * 8 * kNsPerMs);
        break;
    case 6:
        commandMidi(input.byte());
        break;
    case 7:
        handleMessage(0x80 | input.byte(), input);
        break;
    case 8: {
        const PanelRects rects = cardPanelRects(client_);
        const PixelRect boxes[] = {rects.cards,    rects.load,  rects.save,   rects.previousCard,
                                   rects.nextCard, rects.title, rects.cancel, rects.bpm};
        press(middle(boxes[input.byte() % std::size(boxes)]), input);
        break;
    }
    case 9:
        fillCard(input);
        break;
    case 10:
        turnEffect(input);
        break;
    case 11:
        trigger(input);
        break;
    case 12:
        client_ = kSizes[input.byte() % std::size(kSizes)];
        placeReaderCard(client_);
        break;
    case 13:
        hideInsertedCard();
        soundEngine().deactivateAllVoices(); // the device has gone
        break;
    default:
        play(1 + 8 * std::uint32_t{input.byte()}); // up to four stretches
    }
    lookThrough();
}

bool Instrument::actOnPanel(int number, Input& input) {
    perform(number % 8, input);
    return !ended_;
}

bool Instrument::act(int number, Input& input) {
    perform(number % 16, input);
    return !ended_;
}

void Instrument::receive(int status, Input& input) {
    handleMessage(status, input);
    lookThrough();
}

} // namespace percussomatic::fuzz
