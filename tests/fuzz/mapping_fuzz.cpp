// SPDX-License-Identifier: MIT
// Input: the settings file, followed by the older mappings file from its first line on.
#include "fuzz/fuzzing.h"
#include "midi/midi_connection.h"
#include "midi/midi_mapping.h"
#include "midi/midi_profile.h"
#include "midi/midi_state.h"
#include "panel/control_names.h"
#include "support/fake_system.h"

#include <algorithm>
#include <string>

using namespace percussomatic;
using fuzz::require;

namespace {

constexpr std::string_view kLegacyMagic = "LUMIVARDA_MIDI_MAP_V1";
constexpr std::size_t kMaxMoved = 16; // mapped controllers that are moved

std::vector<MidiMapping> reloadedMappings() {
    saveMidiProfile();
    loadMidiProfile();
    return midiState().mappings;
}

void checkAdding(const MidiMapping& added) {
    addMidiMapping(added.controlId, added.channel, added.controller);
    const auto& all = midiState().mappings;
    const auto conflicts = std::ranges::count_if(all, [&](const MidiMapping& mapping) {
        return mapping.controlId == added.controlId ||
               (mapping.channel == added.channel && mapping.controller == added.controller);
    });
    require(conflicts == 1 && all.back() == added, "a new mapping replaces all that conflict");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    const std::size_t legacy = std::min(text.find(kLegacyMagic), text.size());
    const std::string_view settings = text.substr(0, legacy);

    const FreshInstrument instrument;
    setSettingsText({settings.begin(), settings.end()});
    fakeSystem().legacyMap = text.substr(legacy);
    midiPortOpened(L"Keys");

    const std::vector<MidiMapping> mappings = midiState().mappings;
    for (const MidiMapping& mapping : mappings) {
        require(mapping.channel >= 0 && mapping.channel < kMidiChannels &&
                    mapping.controller >= 0 && mapping.controller < kMidiControllers,
                "channels and controllers exist");
    }
    for (std::size_t i = 0; i < std::min(mappings.size(), kMaxMoved); ++i) {
        handleControlChange(mappings[i].channel, mappings[i].controller, 127);
    }
    const std::vector<MidiMapping> saved = reloadedMappings(); // merges repeated keys
    require(reloadedMappings() == saved, "a saved profile loads unchanged");
    checkAdding(mappings.empty() ? MidiMapping{std::string(control::line(0).switches[0]), 3, 7}
                                 : mappings.front());
    return 0;
}
