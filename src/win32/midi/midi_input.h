// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

#include <mmsystem.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace percussomatic {

// The MIDI IN connection: lists the ports, opens one of them and posts its messages to the main
// window.
//
// Threads: GUI thread, except the driver's callback, which only reads notifyWindow and posts.

inline constexpr UINT kNoMidiDevice = 0xFFFFFFFF;

struct MidiInputInfo {
    UINT deviceId = kNoMidiDevice; // winmm's index; a list may have gaps
    std::wstring name;
};

struct MidiInputContext {
    std::atomic<HWND> notifyWindow = nullptr; // set once, before a port is opened
    HMIDIIN input = nullptr;
    UINT deviceId = kNoMidiDevice;
    std::wstring deviceName; // as the driver reports it; empty if no port is open

    // The device window and its controls with variable content; null while it does not exist.
    HWND deviceWindow = nullptr;
    HWND deviceList = nullptr;
    HWND connectionLine = nullptr;
    HWND learnLine = nullptr;
    HWND internalRadio = nullptr;
    HWND midiRadio = nullptr;
    HWND syncLine = nullptr;
};

MidiInputContext& midiInputContext() noexcept;

// Skips ports whose capabilities cannot be read.
std::vector<MidiInputInfo> enumerateMidiInputs();

// Closes the open port, if any, then opens the given one. On failure returns false, with no port
// open.
bool openMidiInput(MidiInputContext& context, UINT deviceId);
void closeMidiInput(MidiInputContext& context);

// Updates "Connected to: ..." in the device window. No-op while the window does not exist.
void refreshConnectionText(const MidiInputContext& context);

// Opens the port of the last run. If that is not connected, the learn line says so.
void connectSavedMidiInput();

// The driver's callback; `instance` is the MidiInputContext.
void CALLBACK onMidiInput(HMIDIIN input, UINT message, DWORD_PTR instance, DWORD_PTR firstParameter,
                          DWORD_PTR secondParameter);

} // namespace percussomatic
