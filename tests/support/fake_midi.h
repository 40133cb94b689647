#pragma once

#include "support/fake_system.h"

#include <optional>
#include <string>

namespace percussomatic {

// Stands in for the settings file, the older list of mappings and the learn line. Keys keep their
// order as in the file. GUI thread.
struct FakeMidi {
    std::optional<std::string> legacyMap; // bytes of the file, if there is one
    bool flushed = true;                  // nothing has been written since the last flush
};

FakeMidi& fakeMidi();

// The settings file as its lines, "[section]" and "key=value", each with a line feed.
std::wstring settingsText();
void setSettingsText(const std::wstring& text);

// A fresh instrument to which no port has been connected yet, without files.
class FreshMidi {
public:
    FreshMidi();

private:
    FreshInstrument instrument_;
};

} // namespace percussomatic
