// SPDX-License-Identifier: MIT
#pragma once

#include "main_window_handle.h"
#include "window_timers.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace percussomatic {

// What the core asked of the system, and what the system answers. GUI thread.
struct FakeSystem {
    WindowHandle window = this;             // the panel's
    std::map<WindowTimer, unsigned> timers; // running, by period in ms
    std::uint32_t tickCountMs = 0;
    std::wstring syncStatus;
    bool externalSyncShown = false;
    std::wstring learnLine;             // of the MIDI window
    std::vector<std::wstring> problems; // that the player was told of
};

FakeSystem& fakeSystem();

// An instrument as just started, stopped and silent, on a recorded system and screen and with the
// virtual clock at 0. In place of the twelve recordings the engine has twelve tiny ones. Ends the
// step clock's thread when it goes.
class FreshInstrument {
public:
    FreshInstrument();
    ~FreshInstrument();
    FreshInstrument(const FreshInstrument&) = delete;
    FreshInstrument& operator=(const FreshInstrument&) = delete;
};

} // namespace percussomatic
