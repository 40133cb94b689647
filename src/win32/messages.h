// SPDX-License-Identifier: MIT
// The messages that the program posts to its main window.
#pragma once

#include <windows.h>

namespace percussomatic {

// Posted by the MIDI driver's callback and the MIDI window. wParam is one of the commands below or
// a MIDI short message as the driver packs it: status, first and second data byte from the lowest
// byte up. The lowest byte of a command is below 0x80, so it is never mistaken for a status byte.
inline constexpr UINT kMidiNotifyMessage = WM_APP + 0x5A;
inline constexpr WPARAM kMidiCmdConnectionChanged = 0x10000; // lParam 1 opened, 0 closed
inline constexpr WPARAM kMidiCmdLearn = 0x10001;
inline constexpr WPARAM kMidiCmdClearMappings = 0x10002;
inline constexpr WPARAM kMidiCmdInternalClock = 0x10003;
inline constexpr WPARAM kMidiCmdMidiClock = 0x10004;

// Posted by the step clock when a step is due; no parameters.
inline constexpr UINT kStepTickMessage = WM_APP + 0x5B;

// Posted by the card saving thread when a card could not be saved; no parameters.
inline constexpr UINT kCardProblemMessage = WM_APP + 0x5C;

} // namespace percussomatic
