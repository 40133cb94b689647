// SPDX-License-Identifier: MIT
#include "win32/midi/midi_input.h"

#include "midi/midi_profile.h"
#include "midi/midi_state.h"
#include "win32/messages.h"

#include <algorithm>

namespace percussomatic {

namespace {

void postConnectionChanged(const MidiInputContext& context, bool opened) {
    if (const HWND window = context.notifyWindow; window != nullptr) {
        PostMessageW(window, kMidiNotifyMessage, kMidiCmdConnectionChanged, opened ? 1 : 0);
    }
}

// Null on failure.
HMIDIIN openAndStart(MidiInputContext& context, UINT deviceId) {
    HMIDIIN input = nullptr;
    if (midiInOpen(&input, deviceId, reinterpret_cast<DWORD_PTR>(&onMidiInput),
                   reinterpret_cast<DWORD_PTR>(&context), CALLBACK_FUNCTION) != MMSYSERR_NOERROR) {
        return nullptr;
    }
    if (input != nullptr && midiInStart(input) != MMSYSERR_NOERROR) {
        midiInClose(input);
        return nullptr;
    }
    return input;
}

} // namespace

MidiInputContext& midiInputContext() noexcept {
    static MidiInputContext context;
    return context;
}

std::vector<MidiInputInfo> enumerateMidiInputs() {
    std::vector<MidiInputInfo> ports;
    const UINT count = midiInGetNumDevs();
    for (UINT id = 0; id < count; ++id) {
        MIDIINCAPSW capabilities{};
        if (midiInGetDevCapsW(id, &capabilities, sizeof capabilities) == MMSYSERR_NOERROR) {
            ports.push_back({id, capabilities.szPname});
        }
    }
    return ports;
}

bool openMidiInput(MidiInputContext& context, UINT deviceId) {
    closeMidiInput(context);
    MIDIINCAPSW capabilities{};
    if (midiInGetDevCapsW(deviceId, &capabilities, sizeof capabilities) != MMSYSERR_NOERROR) {
        return false;
    }
    HMIDIIN input = openAndStart(context, deviceId);
    if (input == nullptr) {
        return false;
    }
    context.input = input;
    context.deviceId = deviceId;
    context.deviceName = capabilities.szPname;
    refreshConnectionText(context);
    postConnectionChanged(context, true);
    return true;
}

void closeMidiInput(MidiInputContext& context) {
    if (context.input != nullptr) {
        midiInStop(context.input);
        midiInReset(context.input);
        midiInClose(context.input);
        context.input = nullptr;
    }
    context.deviceId = kNoMidiDevice;
    context.deviceName.clear();
    refreshConnectionText(context);
    postConnectionChanged(context, false);
}

void refreshConnectionText(const MidiInputContext& context) {
    if (context.connectionLine == nullptr) {
        return;
    }
    const std::wstring& name = context.deviceName;
    SetWindowTextW(context.connectionLine,
                   (L"Connected to: " + (name.empty() ? L"no devices" : name)).c_str());
}

void connectSavedMidiInput() {
    const std::wstring saved = savedMidiDevice();
    if (saved.empty()) {
        return;
    }
    const std::vector<MidiInputInfo> ports = enumerateMidiInputs();
    const auto found =
        std::find_if(ports.begin(), ports.end(), [&saved](const MidiInputInfo& port) {
            return sameDeviceName(port.name, saved);
        });
    if (found != ports.end()) {
        openMidiInput(midiInputContext(), found->deviceId);
    } else {
        setLearnStatus(L"Saved MIDI device not connected: " + saved);
    }
}

void CALLBACK onMidiInput(HMIDIIN /*input*/, UINT message, DWORD_PTR instance,
                          DWORD_PTR firstParameter, DWORD_PTR /*secondParameter*/) {
    const auto* context = reinterpret_cast<const MidiInputContext*>(instance);
    if ((message != MIM_DATA && message != MIM_MOREDATA) || context == nullptr) {
        return;
    }
    if (const HWND window = context->notifyWindow; window != nullptr) {
        PostMessageW(window, kMidiNotifyMessage, firstParameter, 0);
    }
}

} // namespace percussomatic
