#include "midi/midi_profile.h"

#include "midi/midi_connection.h"
#include "support/fake_midi.h"
#include "support/fake_screen.h"
#include "support/panel_actions.h"

#include <gtest/gtest.h>

namespace percussomatic {
namespace {

using Mappings = std::vector<MidiMapping>;

const std::string kMagic = "LUMIVARDA_MIDI_MAP_V1";

class MidiProfile : public testing::Test {
protected:
    FreshMidi instrument_;
};

TEST_F(MidiProfile, SectionNamesHoldNoBracketsAndNoLineEnds) {
    EXPECT_EQ(midiProfileSectionName(L"[1] Pad\r\nBox]"), L"DEVICE:_1_ Pad__Box_");
    EXPECT_EQ(midiProfileSectionName(L""), L"DEVICE:Unknown MIDI Device");
    EXPECT_EQ(midiProfileSectionName(L" ;=\x266A\u30C4"), L"DEVICE: ;=\x266A\u30C4");
}

TEST_F(MidiProfile, SavedNameMeansItsDevice) {
    EXPECT_TRUE(sameDeviceName(L"usb keyS", L"USB Keys"));
    EXPECT_TRUE(sameDeviceName(L"Keys", L"\tKeys  "));
    EXPECT_TRUE(sameDeviceName(L"\tKeys  ", L"Keys"));
    EXPECT_FALSE(sameDeviceName(L"Keys", L"Keys 2"));
    EXPECT_FALSE(sameDeviceName(L"\xC4", L"\xE4")) << "only ASCII letters are folded";
    EXPECT_FALSE(sameDeviceName(L"@", L"`"));
}

TEST_F(MidiProfile, EntriesOfTheSettingsFileCountWhenBothNumbersDo) {
    const auto loaded = [](const std::wstring& value) {
        setSettingsText(L"[DEVICE:Keys]\nsw_001=" + value + L"\n");
        loadMidiProfile();
        return midiState().mappings;
    };
    midiState().profileDeviceName = L"Keys";
    EXPECT_EQ(loaded(L"15,127"), (Mappings{{"sw_001", 15, 127}}));
    EXPECT_EQ(loaded(L" 3,\t+7"), (Mappings{{"sw_001", 3, 7}}));
    EXPECT_EQ(loaded(L"007,-0 and more"), (Mappings{{"sw_001", 7, 0}}));
    EXPECT_EQ(loaded(L"1," + std::wstring(123, L'0') + L"127"), (Mappings{{"sw_001", 1, 12}}))
        << "cut with the buffer for it";
    for (const wchar_t* value : {L"", L"5", L"5,", L"16,0", L"0,128", L"-1,5", L"3 ,7", L"a1,2",
                                 L"4294967297,5", L"\u0130,5"}) { // U+0130 ends in a digit's byte
        EXPECT_EQ(loaded(value), Mappings{}) << testing::PrintToString(value);
    }
}

TEST_F(MidiProfile, LegacyLinesCountWhenAllThreeFieldsDo) {
    const std::pair<const char*, Mappings> cases[] = {
        {"rotary_002,0,21", {{"rotary_002", 0, 21}}},
        {"sw_001,15,127\r", {{"sw_001", 15, 127}}},
        {"sw_001, \t+3x,+4,5", {{"sw_001", 3, 4}}},
        {" Sw 1 ,-0,007 ", {{" Sw 1 ", 0, 7}}},
        {",1,2", {{"", 1, 2}}},
        {"a,1,1\n\nb,2,2\r\r\na,1,1", {{"a", 1, 1}, {"b", 2, 2}, {"a", 1, 1}}}};
    for (const auto& [lines, mappings] : cases) {
        EXPECT_EQ(parseLegacyMidiMap(kMagic + "\n" + lines), mappings) << lines;
        EXPECT_EQ(parseLegacyMidiMap(kMagic + "\r\n" + lines + "\n"), mappings) << lines;
    }
    for (const char* line :
         {"", "a", "a,1", "a,1,", "a,,1", "a,16,1", "a,1,128", "a,-1,1", "a,1,-1", "a,- 1,1",
          "a,+-0,1", "a,2147483648,1", "a,1,4294967297", "LUMIVARDA_MIDI_MAP_V1"}) {
        EXPECT_EQ(parseLegacyMidiMap(kMagic + "\n" + line), Mappings{}) << line;
    }
    for (const char* wrong :
         {"", "\n", " LUMIVARDA_MIDI_MAP_V1", "LUMIVARDA_MIDI_MAP_V1 ", "LUMIVARDA_MIDI_MAP_V1\r\r",
          "lumivarda_midi_map_v1", "\nLUMIVARDA_MIDI_MAP_V1"}) {
        EXPECT_EQ(parseLegacyMidiMap(wrong + std::string("\na,1,1\n")), std::nullopt) << wrong;
    }
    EXPECT_EQ(parseLegacyMidiMap(kMagic), Mappings{});
}

TEST_F(MidiProfile, BindingReplacesByControlAndByControlChangeAndSaves) {
    const std::wstring others = L"[DEVICE:Other]\nsw_001=2,2\n[GENERAL]\nLastMidiDevice=Keys\n";
    setSettingsText(others);
    midiState().profileDeviceName = L"Keys";
    const auto expectSaved = [&](const char* id, int channel, int controller,
                                 const wchar_t* section) {
        addMidiMapping(id, channel, controller);
        EXPECT_EQ(settingsText(), others + L"[DEVICE:Keys]\n" + section);
        EXPECT_TRUE(fakeMidi().flushed);
        const Mappings inMemory = midiState().mappings;
        loadMidiProfile();
        EXPECT_EQ(midiState().mappings, inMemory);
    };
    expectSaved("sw_001", 0, 1, L"sw_001=0,1\n");
    expectSaved("sw_003", 1, 1, L"sw_001=0,1\nsw_003=1,1\n");
    expectSaved("sw_001", 0, 9, L"sw_003=1,1\nsw_001=0,9\n");
    expectSaved("sw_004", 1, 1, L"sw_001=0,9\nsw_004=1,1\n");
    expectSaved("sw_004", 0, 9, L"sw_004=0,9\n");
    expectSaved("sw_004", 0, 9, L"sw_004=0,9\n");
    midiState().profileDeviceName.clear();
    addMidiMapping("sw_009", 3, 3);
    EXPECT_EQ(midiState().mappings.back(), (MidiMapping{"sw_009", 3, 3})) << "kept in memory";
    EXPECT_EQ(settingsText().find(L"sw_009"), std::wstring::npos);
}

TEST_F(MidiProfile, ConnectingLoadsTheProfileAndWritesOnlyTheDevice) {
    const std::wstring profiles = L"[DEVICE:Keys]\nsw_009=1,1\n[DEVICE:Pad _1_]\n"
                                  L"slider_001=0,7\nby hand=yes\nsw_007=9,64\nsw_001=16,1\n";
    setSettingsText(profiles);
    fakeMidi().legacyMap = kMagic + "\nsw_020,1,1\n";
    midiPortOpened(L"Pad [1]");
    EXPECT_EQ(midiState().mappings, (Mappings{{"slider_001", 0, 7}, {"sw_007", 9, 64}}));
    EXPECT_EQ(fakeSystem().learnLine, L"Profile loaded: 2 mapping(s)");
    const std::wstring after = profiles + L"[GENERAL]\nLastMidiDevice=Pad [1]\n";
    EXPECT_EQ(settingsText(), after);
    EXPECT_TRUE(fakeMidi().flushed);
    EXPECT_EQ(takeRedraws(), (Names{"tempo box", "midi boxes"}));
    midiPortClosed();
    EXPECT_EQ(midiState().mappings, Mappings{});
    EXPECT_EQ(midiState().profileDeviceName, L"");
    EXPECT_EQ(fakeSystem().learnLine, L"No MIDI device connected");
    EXPECT_EQ(settingsText(), after);
    EXPECT_EQ(savedMidiDevice(), L"Pad [1]") << "for the next start";
    EXPECT_EQ(takeRedraws(), (Names{"tempo box", "midi boxes"}));
}

TEST_F(MidiProfile, LegacyListGoesToEveryDeviceWithoutASection) {
    const auto expectLoaded = [](const std::optional<std::string>& file, const wchar_t* section,
                                 const Mappings& mappings) {
        SCOPED_TRACE(file.value_or("no file"));
        setSettingsText(std::wstring(L"[DEVICE:Keys]\n") + section);
        fakeMidi().legacyMap = file;
        midiPortOpened(L"Keys");
        EXPECT_EQ(midiState().mappings, mappings);
        EXPECT_EQ(fakeSystem().learnLine.starts_with(L"Profile loaded:"), !mappings.empty());
    };
    const std::string two = kMagic + "\nsw_001,1,2\nsw_002,3,4\r\n";
    expectLoaded({}, L"", {});
    EXPECT_EQ(fakeSystem().learnLine, L"Connected - no profile found. Press LEARN.");
    expectLoaded("sw_001,1,1\n", L"", {});
    expectLoaded(two, L"", {{"sw_001", 1, 2}, {"sw_002", 3, 4}});
    expectLoaded(two, L"sw_009=1,1\n", {{"sw_009", 1, 1}});
    expectLoaded(two, L"nonsense=1\n", {});
    expectLoaded(kMagic + "\nsl\xE9_1,1,2\n", L"", {{"sl\xE9_1", 1, 2}});
}

} // namespace
} // namespace percussomatic
