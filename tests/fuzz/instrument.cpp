#include "fuzz/instrument.h"

#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "cards/card_panel.h"
#include "fuzz/invariants.h"
#include "input/panel_input.h"
#include "midi/midi_clock.h"
#include "midi/midi_connection.h"
#include "midi/midi_learn.h"
#include "midi/midi_message.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/tempo_text.h"
#include "sequencer/transport.h"
#include "support/fake_screen.h"
#include "support/virtual_clock.h"
#include "system_time.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <map>
#include <string>

namespace percussomatic::fuzz {

namespace {

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
    for (float* value : {&card.effect.effectReturn, &card.effect.roomSize, &card.effect.damping,
                         &card.effect.width, &card.effect.preDelayMs}) {
        *value = cardValue(input);
    }
    std::generate(card.effectSends.begin(), card.effectSends.end(),
                  [&] { return cardValue(input); });
    const int slot = cardPanel().dialogSlot;
    const auto read = parsePunchCard(writePunchCard(card, slot));
    require(read.has_value(), "a written card is read");
    cardPanel().slot(slot) = *read;
    cardPanel().slot(slot).hasSettings = input.flag(); // not the oldest
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

// After every act.
void lookThrough() {
    takeRedraws();
    clearPlainTail();
    checkInvariants();
}

} // namespace

Instrument::Instrument() : recordings_(loadedRecordings()), client_{1618, 1040} {
    sequencer().sampleIndices = recordings_;
    std::filesystem::remove_all("PunchCards");
    resetSound();
    clearPlainTail();
}

double Instrument::scale() const {
    return viewScale(client_);
}

void Instrument::pass(std::int64_t ns) {
    passTimeTo(counterNs() + ns);
    fakeSystem().tickCountMs += static_cast<std::uint32_t>(ns / kNsPerMs);
    for (std::size_t ticks = takePostedTicks().size(); ticks > 0; --ticks) {
        onStepTick();
        require(!sequencer().running || sequencer().currentStep < sequencer().sequenceLength,
                "a tick leads to a step below the length");
    }
    for (const auto& [timer, period] : std::map(fakeSystem().timers)) {
        ended_ = ended_ || fireTimer(timer).request == Request::closeWindow;
    }
}

void Instrument::press(PixelPoint client, Input& input) {
    cursor_ = client;
    const Request request = pressPanel(client, client_).request;
    if (request == Request::askTitle) {
        setCardTitle(typed(input));
    } else if (request == Request::askTempo) {
        if (const auto bpm = tempoOfText(typed(input)); bpm) {
            setTempoBpm(*bpm);
        }
    }
    checkFile();
}

void Instrument::move(int byX, int byY, bool fine) {
    cursor_ = {cursor_.x + byX, cursor_.y + byY};
    movePointer(cursor_, client_, fine);
}

void Instrument::play(std::uint32_t frames) {
    if (frames <= framesLeft_) {
        framesLeft_ -= frames;
        render(frames);
    }
}

void Instrument::perform(int number, Input& input) {
    constexpr Size kSizes[] = {{1618, 1040}, {400, 260}, {120, 90}, {1, 1}, {0, 0}, {7995, 300}};
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
        releasePointer();
        break;
    case 4: {
        const PixelRect rotary = controlClientRect(
            findControl(input.flag() ? control::kMasterRotary : control::kTempoRotary), scale());
        const int delta = input.word();
        turnWheelAt(middle(rotary), client_,
                    {.delta = delta, .control = false, .shift = input.flag()});
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
