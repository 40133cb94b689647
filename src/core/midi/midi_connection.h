// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace percussomatic {

// Called when a MIDI port has been opened or closed. Opening loads the device's profile and saves
// the device as the one to reconnect at the next start. A learn in progress is not affected. GUI
// thread.
void midiPortOpened(const std::wstring& deviceName);
void midiPortClosed();

} // namespace percussomatic
