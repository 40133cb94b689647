#include "midi/midi_profile.h"

#include "midi/midi_connection.h"
#include "support/panel_hand.h"
#include "support/recorded_midi.h"
#include "support/recorded_screen.h"

#include <gtest/gtest.h>

namespace percussomatic {

// For failure messages.
void PrintTo(const MidiMapping& mapping, std::ostream* out) {
    *out << mapping.controlId << "=" << mapping.channel << "," << mapping.controller;
}

namespace {

using Mappings = std::vector<MidiMapping>;

const std::string kMagic = "LUMIVARDA_MIDI_MAP_V1";

class MidiProfile : public testing::Test {
protected:
    FreshMidi instrument_;
};

TEST_F(MidiProfile, SectionNamesHoldNoBracketsAndNoLineEnds) {
    const struct {
        std::wstring device, section;
    } cases[] = {{L"USB MIDI Keyboard", L"DEVICE:USB MIDI Keyboard"},
                 {L"[1] Pad\r\nBox]", L"DEVICE:_1_ Pad__Box_"},
                 {L"", L"DEVICE:Unknown MIDI Device"},
                 {L" ;=\x266A\u30C4", L"DEVICE: ;=\x266A\u30C4"}};
    for (const auto& [device, section] : cases) {
        EXPECT_EQ(midiProfileSectionName(device), section);
    }
}

TEST_F(MidiProfile, SavedNameMeansItsDevice) {
    const struct {
        std::wstring saved, device;
        bool same;
    } cases[] = {{L"usb keyS", L"USB Keys", true},
                 {L"Keys", L"\tKeys  ", true},
                 {L"Keys", L"Keys 2", false},
                 {L"\xC4", L"\xE4", false}, // only ASCII letters are folded
                 {L"@", L"`", false}};
    for (const auto& [saved, device, same] : cases) {
        EXPECT_EQ(sameDeviceName(saved, device), same);
        EXPECT_EQ(sameDeviceName(device, saved), same);
    }
}

TEST_F(MidiProfile, EntriesOfTheSettingsFileCountWhenBothNumbersDo) {
    const auto loaded = [](const std::wstring& value) {
        setSettingsText(L"[DEVICE:Keys]\nsw_001=" + value + L"\n");
        loadMidiProfile();
        return midiState().mappings;
    };
    const struct {
        std::wstring value;
        int channel, controller;
    } cases[] = {{L"15,127", 15, 127},
                 {L" 3,\t+7", 3, 7},
                 {L"007,-0 and more", 7, 0},
                 {L"1," + std::wstring(123, L'0') + L"127", 1, 12}}; // cut with the buffer for it
    midiState().profileDeviceName = L"Keys";
    for (const auto& [value, channel, controller] : cases) {
        EXPECT_EQ(loaded(value), (Mappings{{"sw_001", channel, controller}}));
    }
    for (const wchar_t* value : {L"", L"5", L"5,", L"16,0", L"0,128", L"-1,5", L"3 ,7", L"a1,2",
                                 L"4294967297,5", L"\u0130,5"}) { // U+0130 ends in a digit's byte
        EXPECT_EQ(loaded(value), Mappings{}) << testing::PrintToString(value);
    }
}

TEST_F(MidiProfile, LegacyLinesCountWhenAllThreeFieldsDo) {
    const struct {
        std::string lines;
        Mappings mappings;
    } cases[] = {{"rotary_002,0,21", {{"rotary_002", 0, 21}}},
                 {"sw_001,15,127\r", {{"sw_001", 15, 127}}},
                 {"sw_001, \t+3x,+4,5", {{"sw_001", 3, 4}}},
                 {" Sw 1 ,-0,007 ", {{" Sw 1 ", 0, 7}}},
                 {",1,2", {{"", 1, 2}}},
                 {"a,1,1\n\nb,2,2\r\r\na,1,1", {{"a", 1, 1}, {"b", 2, 2}, {"a", 1, 1}}}};
    const std::string first = kMagic + "\n", firstOfDos = kMagic + "\r\n";
    for (const auto& [lines, mappings] : cases) {
        EXPECT_EQ(parseLegacyMidiMap(first + lines), mappings) << lines;
        EXPECT_EQ(parseLegacyMidiMap((firstOfDos + lines).append("\n")), mappings) << lines;
    }
    for (const char* line :
         {"", "a", "a,1", "a,1,", "a,,1", "a,16,1", "a,1,128", "a,-1,1", "a,1,-1", "a,- 1,1",
          "a,+-0,1", "a,2147483648,1", "a,1,4294967297", "LUMIVARDA_MIDI_MAP_V1"}) {
        EXPECT_EQ(parseLegacyMidiMap(first + line), Mappings{}) << line;
    }
    for (const char* wrong :
         {"", "\n", " LUMIVARDA_MIDI_MAP_V1", "LUMIVARDA_MIDI_MAP_V1 ", "LUMIVARDA_MIDI_MAP_V1\r\r",
          "lumivarda_midi_map_v1", "\nLUMIVARDA_MIDI_MAP_V1"}) {
        EXPECT_EQ(parseLegacyMidiMap(wrong + std::string("\na,1,1\n")), std::nullopt) << wrong;
    }
    EXPECT_EQ(parseLegacyMidiMap(kMagic), Mappings{});
}

TEST_F(MidiProfile, BindingReplacesByControlAndByControlChangeAndSaves) {
    const struct {
        const char* id;
        int channel, controller;
        const wchar_t* section; // afterwards
    } cases[] = {{"sw_001", 0, 1, L"sw_001=0,1\n"},
                 {"sw_002", 0, 2, L"sw_001=0,1\nsw_002=0,2\n"},
                 {"sw_003", 1, 1, L"sw_001=0,1\nsw_002=0,2\nsw_003=1,1\n"},
                 {"sw_001", 0, 9, L"sw_002=0,2\nsw_003=1,1\nsw_001=0,9\n"},
                 {"sw_004", 1, 1, L"sw_002=0,2\nsw_001=0,9\nsw_004=1,1\n"},
                 {"sw_002", 0, 9, L"sw_004=1,1\nsw_002=0,9\n"},
                 {"sw_002", 0, 9, L"sw_004=1,1\nsw_002=0,9\n"}};
    const std::wstring others = L"[DEVICE:Other]\nsw_001=2,2\n[GENERAL]\nLastMidiDevice=Keys\n";
    setSettingsText(others);
    midiState().profileDeviceName = L"Keys";
    for (const auto& [id, channel, controller, section] : cases) {
        addMidiMapping(id, channel, controller);
        EXPECT_EQ(settingsText(), others + L"[DEVICE:Keys]\n" + section);
        EXPECT_TRUE(recordedMidi().flushed);
        const Mappings inMemory = midiState().mappings;
        loadMidiProfile();
        EXPECT_EQ(midiState().mappings, inMemory);
    }
    midiState().profileDeviceName.clear();
    addMidiMapping("sw_009", 3, 3);
    EXPECT_EQ(midiState().mappings.back(), (MidiMapping{"sw_009", 3, 3})) << "kept in memory";
    EXPECT_EQ(settingsText().find(L"sw_009"), std::wstring::npos);
}

TEST_F(MidiProfile, ConnectingLoadsTheProfileAndWritesOnlyTheDevice) {
    const std::wstring profiles = L"[DEVICE:Keys]\n"
                                  L"slider_001=0,7\nby hand=yes\nsw_007=9,64\nsw_001=16,1\n"
                                  L"[DEVICE:Pad _1_]\nsw_001=0,1\n";
    setSettingsText(profiles);
    recordedMidi().legacyMap = kMagic + "\nsw_020,1,1\n";
    const struct {
        const wchar_t *device, *status;
        Mappings mappings;
    } cases[] = {
        {L"Keys", L"Profile loaded: 2 mapping(s)", {{"slider_001", 0, 7}, {"sw_007", 9, 64}}},
        {L"Pad [1]", L"Profile loaded: 1 mapping(s)", {{"sw_001", 0, 1}}}};
    for (const auto& [device, status, mappings] : cases) {
        midiPortOpened(device);
        EXPECT_EQ(midiState().mappings, mappings);
        EXPECT_EQ(recordedMidi().learnLine, status);
        EXPECT_EQ(settingsText(), profiles + L"[GENERAL]\nLastMidiDevice=" + device + L"\n");
        EXPECT_EQ(savedMidiDevice(), device);
        EXPECT_TRUE(recordedMidi().flushed);
        EXPECT_EQ(takeRedraws(), (Names{"tempo box", "midi boxes"}));
    }
    const std::wstring before = settingsText();
    midiPortClosed();
    EXPECT_EQ(midiState().mappings, Mappings{});
    EXPECT_EQ(midiState().profileDeviceName, L"");
    EXPECT_EQ(recordedMidi().learnLine, L"No MIDI device connected");
    EXPECT_EQ(settingsText(), before);
    EXPECT_EQ(savedMidiDevice(), L"Pad [1]") << "for the next start";
    EXPECT_EQ(takeRedraws(), (Names{"tempo box", "midi boxes"}));
}

TEST_F(MidiProfile, LegacyListGoesToEveryDeviceWithoutASection) {
    const std::string two = kMagic + "\nsw_001,1,2\nsw_002,3,4\r\n";
    const struct {
        std::optional<std::string> file;
        const wchar_t* section; // of the device before
        Mappings mappings;
    } cases[] = {{{}, L"", {}},
                 {"sw_001,1,1\n", L"", {}},
                 {two, L"", {{"sw_001", 1, 2}, {"sw_002", 3, 4}}},
                 {two, L"sw_009=1,1\n", {{"sw_009", 1, 1}}},
                 {two, L"nonsense=1\n", {}},
                 {kMagic + "\nsl\xE9_1,1,2\n", L"", {{"sl\xE9_1", 1, 2}}}};
    for (const auto& [file, section, mappings] : cases) {
        SCOPED_TRACE(file.value_or("no file"));
        setSettingsText(std::wstring(L"[DEVICE:Keys]\n") + section);
        recordedMidi().legacyMap = file;
        midiPortOpened(L"Keys");
        EXPECT_EQ(midiState().mappings, mappings);
        EXPECT_EQ(recordedMidi().learnLine,
                  mappings.empty()
                      ? L"Connected - no profile found. Press LEARN."
                      : L"Profile loaded: " + std::to_wstring(mappings.size()) + L" mapping(s)");
    }
}

} // namespace
} // namespace percussomatic
