#pragma once

#include <windows.h>

namespace percussomatic {

// The controls that show the MIDI state; null while the device window does not exist. GUI thread.
struct MidiDeviceWindow {
    HWND internalSync = nullptr; // radio buttons
    HWND midiSync = nullptr;
    HWND syncStatus = nullptr; // label
};

MidiDeviceWindow& midiDeviceWindow() noexcept;

} // namespace percussomatic
