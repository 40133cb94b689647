// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

#include <string>

namespace percussomatic {

// The tool window in which a MIDI port is chosen, learn is started and the sync mode is set. It
// keeps nothing itself: its handles lie in MidiInputContext, its buttons call the port's functions
// or post commands to the main window. GUI thread.

// Creates it on first use, otherwise brings it to the front with a fresh list.
void showMidiDeviceWindow(HWND owner);

// What the window shows of learn and of the clock. No-ops while it does not exist.
void showLearnLine(const std::wstring& text);
void showSyncLine(bool externalSync, const std::wstring& text);

} // namespace percussomatic
