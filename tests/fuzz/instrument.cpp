// SPDX-License-Identifier: MIT
#include "fuzz/instrument.h"

#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "cards/card_panel.h"
#include "input/panel_input.h"
#include "midi/midi_clock.h"
#include "midi/midi_connection.h"
#include "midi/midi_learn.h"
#include "midi/midi_message.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "sequencer/step_clock.h"
#include "sequencer/tempo_text.h"
#include "sequencer/transport.h"
#include "support/virtual_clock.h"
#include "system_time.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace percussomatic::fuzz {

namespace {

float cardValue(Input& input) {
    using Limits = std::numeric_limits<float>;
    constexpr std::array kSpecial{Limits::quiet_NaN(),
                                  Limits::infinity(),
                                  -Limits::infinity(),
                                  Limits::max(),
                                  -1e-6f,
                                  250.0f};
    const std::size_t value = input.byte();
    return value < kSpecial.size() ? kSpecial[value] : static_cast<float>(value) / 240.0f;
}

// Writes and reads a card with arbitrary values and puts it into the slot that the dialog shows.
void fillSlot(Input& input) {
    const auto value = [&] { return cardValue(input); };
    PunchCard card;
    std::uint32_t steps = 0;
    for (std::uint8_t& step : card.pattern.steps) {
        steps = steps > 3 ? steps >> 1 : 0x100U | input.byte(); // eight steps per byte
        step = steps & 1;
    }
    card.masterVolume = value();
    card.tempo = value();
    card.sequenceLength = input.byte();
    std::ranges::generate(card.lineVolumes, value);
    std::ranges::generate(card.instruments, [&] { return input.byte() & 1; });
    card.effectEnabled = input.flag();
    card.effectPreset = input.word();
    for (const EffectLimit& limit : kEffectLimits) {
        card.effect.*limit.value = value();
    }
    std::ranges::generate(card.effectSends, value);
    const int slot = cardPanel().dialogSlot;
    const auto read = parsePunchCard(writePunchCard(card, slot));
    require(read.has_value(), "a written card is accepted");
    cardPanel().slot(slot) = *read;
    cardPanel().slot(slot).hasSettings = input.flag(); // versions 1 and 2 have none
}

std::wstring typedText(Input& input) {
    std::wstring text;
    for (int length = input.below(16); length > 0; --length) {
        text.push_back(static_cast<wchar_t>(input.byte()));
    }
    return text;
}

void handleMessage(int status, Input& input) {
    const std::uint32_t first = input.byte(), second = input.byte();
    handleMidiMessage(static_cast<std::uint32_t>(status) | first << 8 | second << 16);
}

PixelPoint centreOf(const PixelRect& rect) {
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

void checkAll() {
    takeRedraws();
    checkInvariants();
}

// Sets what FreshInstrument leaves as it was.
void resetSound() {
    SoundEngine& engine = soundEngine();
    engine.voices = {};
    engine.setAutoStop(true, 1e-5f, 100, 50);
    engine.setEffectEnabled(false);
    selectPreset(0);
    for (std::uint32_t send = 0; send < kSendCount; ++send) {
        engine.setSend(send, 0.0f);
    }
}

// Starts voices.
void trigger(Input& input) {
    const int index = input.below(2 * kInstrumentCount + 4) - 2; // also outside the bank
    const auto gain = static_cast<float>(input.word()) * 0.001f;
    for (int voice = input.below(70); voice >= 0; --voice) {
        soundEngine().trigger(index, gain);
    }
}

// What the effects window does, and the auto-stop.
void changeEffect(Input& input) {
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
        const int bar = input.byte() % 24; // some do not exist
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

} // namespace

Instrument::Instrument() {
    std::filesystem::remove_all(kCardFolder);
    resetSound();
}

void Instrument::pass(std::int64_t ns) {
    passTimeTo(counterNs() + ns);
    for (std::size_t ticks = takePostedTicks().size(); ticks > 0; --ticks) {
        onClockTick();
        require(!sequencer().running || sequencer().currentStep < sequencer().sequenceLength,
                "a tick leads to a step below the length");
    }
    for (const auto& [timer, period] : std::map(fakeSystem().timers)) {
        ended_ = ended_ || fireTimer(timer).request == Request::closeWindow;
    }
}

void Instrument::press(PixelPoint point, Input& input) {
    cursor_ = point;
    const Request request = pressPanel(point, client_).request;
    if (request == Request::askTitle) {
        setCardTitle(typedText(input));
    } else if (request == Request::askTempo) {
        if (const auto bpm = parseTempo(typedText(input)); bpm) {
            setTempoBpm(*bpm);
        }
    }
    PunchCard card;
    const std::filesystem::path path = cardFilePath(cardPanel().dialogSlot);
    require(!std::filesystem::exists(path) || loadCardFile(path, card), "a saved card is accepted");
}

void Instrument::perform(int action, Input& input) {
    constexpr Size kSizes[] = {{1618, 1040}, {400, 260}, {120, 90}, {1, 1}, {0, 0}, {7995, 300}};
    constexpr void (*kMidiCommands[])() = {armMidiLearn,        clearMidiMappings,
                                           followInternalClock, followMidiClock,
                                           midiPortClosed,      [] { midiPortOpened(L"Keys"); }};
    const double scale = viewScale(client_);
    switch (action) {
    case 0:
        press(centreOf(controlClientRect(input.below(kControlCount), scale)), input);
        break;
    case 1: {
        const int x = input.word();
        press({x, input.word()}, input);
        break;
    }
    case 2:
        cursor_.x += input.word();
        cursor_.y += input.word();
        movePointer(cursor_, client_, input.flag());
        break;
    case 3:
        releasePointer();
        break;
    case 4: {
        const auto rotary = input.flag() ? control::kMasterRotary : control::kTempoRotary;
        const int delta = input.word();
        turnWheelAt(centreOf(controlClientRect(findControl(rotary), scale)), client_,
                    {.delta = delta, .control = false, .shift = input.flag()});
        break;
    }
    case 5:
        pass(input.byte() * 8 * kNsPerMs);
        break;
    case 6:
        kMidiCommands[input.byte() % std::size(kMidiCommands)]();
        break;
    case 7:
        handleMessage(0x80 | input.byte(), input);
        break;
    case 8: {
        const PanelRects rects = cardPanelRects(client_);
        const PixelRect boxes[] = {rects.cards,    rects.load,  rects.save,   rects.previousCard,
                                   rects.nextCard, rects.title, rects.cancel, rects.bpm};
        press(centreOf(boxes[input.byte() % std::size(boxes)]), input);
        break;
    }
    case 9:
        fillSlot(input);
        break;
    case 10:
        changeEffect(input);
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
        soundEngine().deactivateAllVoices(); // as when the device is lost
        break;
    default:
        if (const std::uint32_t frames = 1 + 8 * std::uint32_t{input.byte()};
            frames <= framesLeft_) {
            framesLeft_ -= frames;
            std::vector<std::int16_t> out(2 * std::size_t{frames});
            soundEngine().renderBlock(out.data(), frames);
            require(std::ranges::count(out, std::numeric_limits<std::int16_t>::min()) == 0,
                    "-32768 is never written");
        }
    }
}

bool Instrument::act(int action, Input& input) {
    perform(action, input);
    checkAll();
    return !ended_;
}

void Instrument::receive(int status, Input& input) {
    handleMessage(status, input);
    checkAll();
}

} // namespace percussomatic::fuzz
