#pragma once

#include "sequencer/system.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace percussomatic {

// What the core asked of the system, and what the system answers. GUI thread.
struct RecordedSystem {
    WindowHandle window = this;             // the panel's
    std::map<WindowTimer, unsigned> timers; // running, by period in ms
    std::uint32_t tickCountMs = 0;
    std::wstring syncStatus;
    bool externalSyncShown = false;
    std::vector<std::wstring> problems; // that the player was told of
};

RecordedSystem& recordedSystem();

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
