// SPDX-License-Identifier: MIT
#pragma once

#include "cards/card_file.h"
#include "window_timers.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace percussomatic {

// Fake of the system: windows, timers, messages and files. Cards are saved immediately; settings
// are kept in memory. GUI thread.
struct FakeSystem {
    std::map<WindowTimer, unsigned> timers; // running timers by period in ms
    std::wstring syncStatus, learnLine;     // of the MIDI window
    std::vector<std::wstring> problems;     // shown to the player
    std::optional<std::string> legacyMap;   // bytes of the older mapping file
    CardWriter cardWriter;
    int shownSend = -1;   // of sample 0, in the effects window
    bool awake = false;   // the computer must not go to sleep
    bool writable = true; // the settings file
    bool flushed = true;  // no setting was written after the last flush
};

FakeSystem& fakeSystem();

// The settings, sorted, as lines "[section]" and "key=value", each with a line feed.
std::wstring settingsText();
void setSettingsText(const std::wstring& text);

using Names = std::vector<std::string>;

// Repaint requests since the last call, in order: "sw_007 later", "bottone_001 now", "slider_001
// from 40", "tempo box", "effects box", "effects window", "midi boxes", "panel", "card dialog",
// "reader", "flush".
Names takeRedraws();

// Paints everything marked, then names the controls that still show an outdated state, because no
// repaint was requested.
Names staleControls();

void resetFakeScreen(); // paints everything and clears the requests

// The instrument as just started: stopped, silent, without files or MIDI port, on a fake system and
// screen and with the virtual clock at 0. Twelve tiny recordings replace the real ones. The
// destructor ends the step clock's thread.
class FreshInstrument {
public:
    FreshInstrument();
    ~FreshInstrument();
    FreshInstrument(const FreshInstrument&) = delete;
    FreshInstrument& operator=(const FreshInstrument&) = delete;
};

} // namespace percussomatic
