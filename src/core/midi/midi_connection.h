#pragma once

#include <string>

namespace percussomatic {

// What a port that has come or gone means for the instrument: which profile is loaded, and which
// device is looked for at the next start. A learn in progress goes on. GUI thread.
void midiPortOpened(const std::wstring& deviceName);
void midiPortClosed();

} // namespace percussomatic
