#include "fuzz/fuzzing.h"
#include "midi/midi_connection.h"
#include "midi/midi_mapping.h"
#include "midi/midi_profile.h"
#include "midi/midi_state.h"
#include "support/fake_midi.h"

#include <algorithm>
#include <string>

// The settings file, and from its first line on the older list of mappings.

using namespace percussomatic;
using fuzz::require;

namespace {

constexpr std::string_view kLegacyMagic = "LUMIVARDA_MIDI_MAP_V1";
constexpr std::size_t kPlayed = 16; // controllers of the profile that are moved

void checkReload() {
    saveMidiProfile();
    loadMidiProfile();
    const std::vector<MidiMapping> kept = midiState().mappings;
    saveMidiProfile();
    loadMidiProfile();
    require(midiState().mappings == kept, "a saved profile is loaded as it was");
}

void checkBinding(const MidiMapping& learned) {
    addMidiMapping(learned.controlId, learned.channel, learned.controller);
    const auto& all = midiState().mappings;
    const auto alike = std::count_if(all.begin(), all.end(), [&](const MidiMapping& each) {
        return each.controlId == learned.controlId ||
               (each.channel == learned.channel && each.controller == learned.controller);
    });
    require(alike == 1 && all.back() == learned, "a new binding replaces all that it touches");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    const std::size_t legacy = std::min(text.find(kLegacyMagic), text.size());
    const std::string_view settings = text.substr(0, legacy);

    const FreshMidi instrument;
    setSettingsText({settings.begin(), settings.end()});
    fakeMidi().legacyMap = text.substr(legacy);
    midiPortOpened(L"Keys");

    const std::vector<MidiMapping> mappings = midiState().mappings;
    for (const MidiMapping& each : mappings) {
        require(each.channel >= 0 && each.channel < kMidiChannels && each.controller >= 0 &&
                    each.controller < kMidiControllers,
                "channels and controllers exist");
    }
    for (std::size_t i = 0; i < std::min(mappings.size(), kPlayed); ++i) {
        handleControlChange(mappings[i].channel, mappings[i].controller, 127);
    }
    checkReload();
    checkBinding(mappings.empty() ? MidiMapping{"sw_001", 3, 7} : mappings.front());
    return 0;
}
