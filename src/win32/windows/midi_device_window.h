// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

#include <string>

namespace percussomatic {

// The MIDI window: selects the port, starts learn and sets the sync mode. It has no state of its
// own: its handles are in MidiInputContext, and its buttons call midi_input or post commands to the
// main window. GUI thread.

// Creates the window on first use, otherwise updates its list and brings it to the front.
void showMidiDeviceWindow(HWND owner);

// Update the status lines of learn and sync. No-ops while the window does not exist.
void showLearnLine(const std::wstring& text);
void showSyncLine(bool externalSync, const std::wstring& text);

} // namespace percussomatic
