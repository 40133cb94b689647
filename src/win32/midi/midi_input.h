// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

#include <mmsystem.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace percussomatic {

// The one MIDI IN connection of the instrument: lists the ports, opens one of them, and carries
// what it sends to the GUI thread as posted messages.
//
// Threads: GUI thread, but for the driver's callback, which reads the notify window and posts.

inline constexpr UINT kNoMidiDevice = 0xFFFFFFFF;

struct MidiInputInfo {
    UINT deviceId = kNoMidiDevice; // the driver's index; a list of them may have gaps
    std::wstring name;
};

struct MidiInputContext {
    std::atomic<HWND> notifyWindow = nullptr; // set once, before a port is opened
    HMIDIIN input = nullptr;
    UINT deviceId = kNoMidiDevice;
    std::wstring deviceName; // as the driver reports it; empty when no port is open

    // The device window and those of its controls that show something; null while it does not
    // exist.
    HWND deviceWindow = nullptr;
    HWND deviceList = nullptr;
    HWND connectionLine = nullptr;
    HWND learnLine = nullptr;
    HWND internalRadio = nullptr;
    HWND midiRadio = nullptr;
    HWND syncLine = nullptr;
};

MidiInputContext& midiInputContext() noexcept;

// Ports whose capabilities cannot be read are left out.
std::vector<MidiInputInfo> enumerateMidiInputs();

// Closes what is open, always, then opens the port. False leaves no port open.
bool openMidiInput(MidiInputContext& context, UINT deviceId);
void closeMidiInput(MidiInputContext& context);

// "Connected to: ..." in the device window.
void refreshConnectionText(const MidiInputContext& context);

// Opens the port of the last run if it is there; if not, the learn line says so.
void connectSavedMidiInput();

void CALLBACK onMidiInput(HMIDIIN input, UINT message, DWORD_PTR instance, DWORD_PTR firstParameter,
                          DWORD_PTR secondParameter);

} // namespace percussomatic
