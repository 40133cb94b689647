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

// Posted to the main window. wParam is one of the commands below, or a MIDI short message as the
// driver packs it: status, first and second data byte from the lowest byte up. A command's lowest
// byte is below 0x80, so it can never be a status byte.
inline constexpr UINT kMidiNotifyMessage = WM_APP + 0x5A;
inline constexpr WPARAM kMidiCmdConnectionChanged = 0x10000; // lParam 1 opened, 0 closed
inline constexpr WPARAM kMidiCmdLearn = 0x10001;
inline constexpr WPARAM kMidiCmdClearMappings = 0x10002;
inline constexpr WPARAM kMidiCmdInternalClock = 0x10003;
inline constexpr WPARAM kMidiCmdMidiClock = 0x10004;

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
