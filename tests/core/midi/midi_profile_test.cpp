// SPDX-License-Identifier: MIT
#include "midi/midi_profile.h"

#include "midi/midi_connection.h"
#include "sequencer/sequencer.h"
#include "support/fake_system.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace percussomatic {
namespace {

using Mappings = std::vector<MidiMapping>;

const std::string kMagic = "LUMIVARDA_MIDI_MAP_V1";

struct MidiProfile : testing::Test, FreshInstrument {};

TEST_F(MidiProfile, SectionNamesContainNoBracketsOrLineBreaks) {
    EXPECT_EQ(midiProfileSectionName(L"[1] Pad\r\nBox]"), L"DEVICE:_1_ Pad__Box_");
    EXPECT_EQ(midiProfileSectionName(L"  "), L"DEVICE:Unknown MIDI Device");
    EXPECT_EQ(midiProfileSectionName(L" ;=\x266A\u30C4 "), L"DEVICE: ;=\x266A\u30C4");
}

TEST_F(MidiProfile, DeviceNamesMatchRegardlessOfAsciiCaseAndOuterBlanks) {
    EXPECT_TRUE(sameDeviceName(L"usb keyS", L"USB Keys"));
    EXPECT_TRUE(sameDeviceName(L"Keys", L"\tKeys  "));
    EXPECT_FALSE(sameDeviceName(L"Keys", L"Keys 2"));
    EXPECT_FALSE(sameDeviceName(L"\xC4", L"\xE4"));
}

TEST_F(MidiProfile, SettingsAreLoadedIfBothNumbersAreValid) {
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
        << "truncated by the buffer";
    for (const wchar_t* value : {L"", L"5", L"5,", L"16,0", L"0,128", L"-1,5", L"3 ,7", L"a1,2",
                                 L"4294967297,5", L"\u0130,5"}) { // the low byte of U+0130 is '0'
        EXPECT_EQ(loaded(value), Mappings{}) << testing::PrintToString(value);
    }
}

TEST_F(MidiProfile, LegacyLinesAreReadIfAllThreeFieldsAreValid) {
    const std::pair<const char*, Mappings> cases[] = {
        {"sw_001,15,127\r", {{"sw_001", 15, 127}}},
        {"sw_001, \t+3x,+4,5", {{"sw_001", 3, 4}}},
        {" Sw 1 ,-0,007 ", {{" Sw 1 ", 0, 7}}},
        {",1,2", {{"", 1, 2}}},
        {"a,1,1\n\nb,2,2\r\r\na,1,1", {{"a", 1, 1}, {"b", 2, 2}, {"a", 1, 1}}}};
    for (const auto& [lines, mappings] : cases) {
        EXPECT_EQ(parseLegacyMidiMap(kMagic + "\n" + lines), mappings) << lines;
        EXPECT_EQ(parseLegacyMidiMap(kMagic + "\r\n" + lines + "\n"), mappings) << lines;
    }
    for (const char* line : {"", "a,1", "a,1,", "a,,1", "a,16,1", "a,1,128", "a,-1,1", "a,- 1,1",
                             "a,+-0,1", "a,2147483648,1", "LUMIVARDA_MIDI_MAP_V1"}) {
        EXPECT_EQ(parseLegacyMidiMap(kMagic + "\n" + line), Mappings{}) << line;
    }
    for (const char* wrong : {"", " LUMIVARDA_MIDI_MAP_V1", "LUMIVARDA_MIDI_MAP_V1\r\r",
                              "lumivarda_midi_map_v1", "\nLUMIVARDA_MIDI_MAP_V1"}) {
        EXPECT_EQ(parseLegacyMidiMap(wrong + std::string("\na,1,1\n")), std::nullopt) << wrong;
    }
    EXPECT_EQ(parseLegacyMidiMap(kMagic), Mappings{});
}

TEST_F(MidiProfile, BindingReplacesEarlierOnesOfControlAndControllerAndSaves) {
    const std::wstring others = L"[DEVICE:Other]\nsw_001=2,2\n[GENERAL]\nLastMidiDevice=Keys\n";
    setSettingsText(others);
    midiState().profileDeviceName = L"Keys";
    const std::tuple<const char*, int, int, const wchar_t*> cases[] = {
        {"sw_001", 0, 1, L"sw_001=0,1\n"},
        {"sw_003", 1, 1, L"sw_001=0,1\nsw_003=1,1\n"},
        {"sw_001", 0, 9, L"sw_001=0,9\nsw_003=1,1\n"},
        {"sw_004", 1, 1, L"sw_001=0,9\nsw_004=1,1\n"},
        {"sw_004", 0, 9, L"sw_004=0,9\n"}};
    for (const auto& [id, channel, controller, section] : cases) {
        addMidiMapping(id, channel, controller);
        EXPECT_EQ(settingsText(), L"[DEVICE:Keys]\n" + (section + others));
        EXPECT_TRUE(fakeSystem().flushed);
    }
    midiState().profileDeviceName.clear();
    addMidiMapping("sw_009", 3, 3);
    EXPECT_EQ(midiState().mappings.back(), (MidiMapping{"sw_009", 3, 3}));
    EXPECT_EQ(settingsText().find(L"sw_009"), std::wstring::npos);
}

TEST_F(MidiProfile, ConnectingLoadsTheProfileAndSavesOnlyTheDevice) {
    const std::wstring profiles = L"[DEVICE:Keys]\nsw_009=1,1\n[DEVICE:Pad _1_]\n"
                                  L"by hand=yes\nslider_001=0,7\nsw_001=16,1\nsw_007=9,64\n";
    setSettingsText(profiles);
    fakeSystem().legacyMap = kMagic + "\nsw_020,1,1\n";
    const auto takeSyncStatus = [] { // after which a tempo has been measured
        sequencer().externalSync = sequencer().midiClockSeen = true;
        sequencer().midiBpm = 99.0;
        return std::exchange(fakeSystem().syncStatus, L"");
    };
    takeSyncStatus();
    midiPortOpened(L"Pad [1]");
    EXPECT_EQ(takeSyncStatus(), L"SYNC: MIDI CLOCK Waiting for clock...");
    EXPECT_EQ(midiState().mappings, (Mappings{{"slider_001", 0, 7}, {"sw_007", 9, 64}}));
    EXPECT_EQ(fakeSystem().learnLine, L"Profile loaded: 2 mapping(s)");
    EXPECT_TRUE(fakeSystem().flushed);
    EXPECT_EQ(takeRedraws(), (Names{"tempo box", "midi boxes"}));
    midiPortClosed();
    EXPECT_EQ(takeSyncStatus(), L"SYNC: MIDI CLOCK Waiting for clock...");
    EXPECT_EQ(midiState().mappings, Mappings{});
    EXPECT_EQ(midiState().profileDeviceName, L"");
    EXPECT_EQ(fakeSystem().learnLine, L"No MIDI device connected");
    EXPECT_EQ(settingsText(), profiles + L"[GENERAL]\nLastMidiDevice=Pad [1]\n");
    EXPECT_EQ(savedMidiDevice(), L"Pad [1]");
    EXPECT_EQ(takeRedraws(), (Names{"tempo box", "midi boxes"}));
}

TEST_F(MidiProfile, LegacyFileIsImportedForDevicesWithoutASection) {
    const std::string two = kMagic + "\nsw_001,1,2\nsw_002,3,4\r\n";
    const std::tuple<std::optional<std::string>, const wchar_t*, Mappings> cases[] = {
        {std::nullopt, L"", {}},
        {"sw_001,1,1\n", L"", {}},
        {two, L"", {{"sw_001", 1, 2}, {"sw_002", 3, 4}}},
        {two, L"sw_009=1,1\n", {{"sw_009", 1, 1}}},
        {two, L"nonsense=1\n", {}},
        {kMagic + "\nsl\xE9_1,1,2\n", L"", {{"sl\xE9_1", 1, 2}}}};
    for (const auto& [file, section, mappings] : cases) {
        for (const bool writable : {false, true}) {
            setSettingsText(std::wstring(L"[DEVICE:Keys]\n") + section);
            fakeSystem().writable = writable;
            fakeSystem().legacyMap = file;
            midiPortOpened(L"Keys");
            EXPECT_EQ(midiState().mappings, mappings) << file.value_or("no file");
        }
        EXPECT_EQ(fakeSystem().learnLine.starts_with(L"Profile loaded: "), !mappings.empty());
        loadMidiProfile(); // an import has been saved
        EXPECT_EQ(midiState().mappings, mappings);
    }
}

} // namespace
} // namespace percussomatic
