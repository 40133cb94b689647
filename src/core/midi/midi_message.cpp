// SPDX-License-Identifier: MIT
#include "midi/midi_message.h"

#include "midi/midi_clock.h"
#include "midi/midi_mapping.h"
#include "midi/midi_state.h"
#include "panel/control_table.h"

#include <string>

namespace percussomatic {

namespace {

// Kinds of channel messages, by the upper half of the status byte.
constexpr std::uint32_t kNoteOff = 0x80, kNoteOn = 0x90, kControlChange = 0xB0, kPitchBend = 0xE0;

// Realtime messages, by the whole status byte.
constexpr std::uint32_t kTimingClock = 0xF8, kStart = 0xFA, kContinue = 0xFB, kStop = 0xFC;

void showNote(bool on, int note, int velocity, int channel) {
    // Note On with velocity 0 means Note Off.
    setLearnStatus((on && velocity > 0 ? L"Received: NOTE ON " : L"Received: NOTE OFF ") +
                   std::to_wstring(note) + L" Value " + std::to_wstring(velocity) + L" CH " +
                   std::to_wstring(channel + 1));
}

void showPitchBend(int bend, int channel) {
    setLearnStatus(L"Received: PITCH BEND " + std::to_wstring(bend) + L" CH " +
                   std::to_wstring(channel + 1));
}

void handleRealtime(std::uint32_t status) {
    switch (status) {
    case kTimingClock:
        midiClockPulse();
        break;
    case kStart:
        midiStart();
        break;
    case kContinue:
        midiContinue();
        break;
    case kStop:
        midiStop();
        break;
    default:
        break;
    }
}

struct ShortMessage {
    std::uint32_t status;
    int channel, first, second; // of a channel message
};

ShortMessage unpack(std::uint32_t message) noexcept {
    return {.status = message & 0xFF,
            .channel = static_cast<int>(message & 0x0F),
            .first = static_cast<int>(message >> 8 & 0x7F),
            .second = static_cast<int>(message >> 16 & 0x7F)};
}

} // namespace

bool mayFollowLaterSteps(std::uint32_t message) noexcept {
    const auto [status, channel, first, second] = unpack(message);
    if ((status & 0xF0) != kControlChange) {
        return false;
    }
    const int control = mappedControl(channel, first);
    return control == kNoControl || (controlKind(control) != ControlKind::startStop &&
                                     controlKind(control) != ControlKind::edit);
}

void handleMidiMessage(std::uint32_t message) {
    const auto [status, channel, first, second] = unpack(message);
    switch (status & 0xF0) {
    case kControlChange:
        handleControlChange(channel, first, second);
        break;
    case kNoteOn:
    case kNoteOff:
        showNote((status & 0xF0) == kNoteOn, first, second, channel);
        break;
    case kPitchBend:
        showPitchBend(second * 128 + first, channel);
        break;
    default:
        handleRealtime(status);
        break;
    }
}

} // namespace percussomatic
