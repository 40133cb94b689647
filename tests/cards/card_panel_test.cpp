#include "cards/card_panel.h"

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "sequencer/front_panel.h"
#include "sequencer/transport.h"
#include "support/own_folder.h"
#include "support/panel_hand.h"
#include "support/recorded_screen.h"
#include "support/recorded_system.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>

#ifndef _WIN32
#include "support/full_disk.h"
#endif

namespace percussomatic {
namespace {

using Timers = std::map<WindowTimer, unsigned>;

constexpr LayoutSize kClient{kClientWidth, kClientHeight};
constexpr double kStartY = -439.0, kTargetY = 443.0; // of a card in that window
constexpr int kTickMs = 16, kLastTick = 85;          // the first after 1.35 s

// All that a card keeps, as the file would have it.
std::string livePanel() {
    PunchCard card;
    captureCard(card);
    return writePunchCard(card, 0);
}

void expectPanel(const std::string& expected) {
    EXPECT_EQ(livePanel(), expected);
    EXPECT_DOUBLE_EQ(sequencer().bpm, 40.0 + 200.0 * panelState().tempo.value);
    EXPECT_NEAR(soundEngine().masterVolume, std::pow(panelState().master.value, 2), 1e-6);
}

PunchCard fullCard() {
    PunchCard card;
    card.used = card.hasSettings = true;
    card.lineVolumes.fill(1.0f);
    card.instruments.fill(1);
    card.pattern.steps.fill(1);
    return card;
}

// Plays in a working directory of its own.
class PunchCards : public testing::Test {
protected:
    PunchCards() {
        soundEngine().setEffectEnabled(false);
        resetRecordedScreen();
    }

    int upTo(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
    float unit() { return static_cast<float>(upTo(1'000'001)) / 1e6f; }

    void shufflePanel() {
        for (const char* rotary : {"rotary_001", "rotary_002"}) {
            rotaryState(findControl(rotary))->value = unit();
            applyRotary(findControl(rotary));
        }
        for (const RhythmLine& line : kRhythmLines) {
            toggleBit(line.switchA) = static_cast<std::uint8_t>(upTo(2));
            toggleBit(line.switchB) = static_cast<std::uint8_t>(upTo(2));
            sliderOffset(line.slider) = static_cast<std::uint32_t>(upTo(kSliderTravel + 1));
        }
        std::ranges::generate(sequencer().pattern.steps,
                              [&] { return static_cast<std::uint8_t>(upTo(2)); });
        sequencer().sequenceLength = kLengthSwitches[static_cast<std::size_t>(upTo(7))].length;
        SoundEngine& engine = soundEngine();
        selectPreset(upTo(4));
        for (std::uint32_t sample = 0; sample < kInstrumentCount; ++sample) {
            engine.setSend(sample, unit());
        }
        engine.setEffectReturn(unit());
        engine.setEffectRoomSize(unit());
        engine.setEffectDamping(unit());
        engine.setEffectWidth(unit());
        engine.setEffectPreDelayMs(200.0f * unit());
        engine.setEffectEnabled(upTo(2) != 0);
        resetRecordedScreen();
    }
    void shuffleCard() {
        shufflePanel();
        captureCard(shown());
        shown().used = true;
    }

    PunchCard& shown() { return panel_.slots[static_cast<std::size_t>(panel_.dialogSlot)]; }
    static void begin() { beginCardInsertion(kClient); }
    void tick(int count = 1) {
        for (; count > 0; --count) {
            nowMs_ += kTickMs;
            passTimeTo(nowMs_ * kNsPerMs);
            cardInsertionTick();
        }
    }
    void insert() {
        begin();
        tick(kLastTick);
    }

    OwnFolder folder_;
    FreshInstrument instrument_;
    CardPanel& panel_ = cardPanel();
    std::int64_t nowMs_ = 0;
    std::mt19937 random_{1965}; // the engine's numbers are the same everywhere
};

TEST_F(PunchCards, SavedPanelComesBackWhole) {
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        const int slot = panel_.dialogSlot = round % kCardSlots;
        shufflePanel();
        const std::string saved = livePanel();
        saveCard();
        EXPECT_EQ(takeRedraws(), Names{"card dialog"});
        const std::string bytes = contents(cardFilePath(slot));

        shufflePanel();
        if (round % 2 != 0) { // another day
            resetCardPanel();
            loadCards();
            panel_.dialogSlot = slot;
        }
        panelState().rotaryDragIndex = findControl("rotary_002");
        panelState().tempo.dragging = true;
        panelState().sliderDragIndex = findControl("slider_002");
        insert();
        dragRotary(-1000, false); // the hand has lost them
        dragSlider(upTo(kClientWidth), kScale);
        expectPanel(saved);
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_EQ(recordedSystem().syncStatus, syncStatusText());
        saveCard();
        EXPECT_EQ(contents(cardFilePath(slot)), bytes);
    }
    EXPECT_TRUE(recordedSystem().problems.empty());
}

TEST_F(PunchCards, CardSlidesThroughAndIsReadColumnByColumn) {
    shuffleCard();
    const std::string atTheEnd = livePanel();
    shufflePanel();
    toggleCardsDialog();
    panel_.cardInserted = true; // the card before
    begin();
    EXPECT_EQ(soundEngine().outputMuted, 1);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest, 1);
    EXPECT_TRUE(sequencer().editMode && panel_.insertingCard && !panel_.cardsDialogOpen);
    EXPECT_EQ(recordedSystem().timers, (Timers{{WindowTimer::cardInsertion, kTickMs}}));
    EXPECT_EQ(staleControls(), Names{});

    PunchCard expected; // the settings wait for the end
    captureCard(expected);
    expected.pattern = {};
    for (int now = 0, column = 0; now < kLastTick; ++now) {
        SCOPED_TRACE(now);
        const double t = now * kTickMs / 1350.0, part = t * t * (3.0 - 2.0 * t);
        EXPECT_NEAR(panel_.readerCardY, kStartY + (kTargetY - kStartY) * part, 1e-9);
        EXPECT_EQ(cardPanelRects(kClient).readerCard.top, static_cast<int>(panel_.readerCardY));
        for (; column < static_cast<int>(16.0 * part); ++column) {
            for (int line = 0; line < kLineCount; ++line) {
                expected.pattern.set(line, column, shown().pattern.isSet(line, column));
            }
        }
        EXPECT_EQ(panel_.columnsLoaded, column);
        expectPanel(writePunchCard(expected, 0));
        EXPECT_FALSE(panel_.cardInserted);
        takeRedraws();
        tick();
        EXPECT_EQ(staleControls(), Names{});
        const Names asked = takeRedraws(), painted{"reader", "flush"};
        EXPECT_NE(std::search(asked.begin(), asked.end(), painted.begin(), painted.end()),
                  asked.end());
    }
    expectPanel(atTheEnd);
    EXPECT_EQ(panel_.readerCardY, kTargetY);
    EXPECT_EQ(panel_.columnsLoaded, kStepCount);
    EXPECT_TRUE(panel_.cardInserted && !panel_.insertingCard);
    EXPECT_EQ(recordedSystem().timers, Timers{});
    EXPECT_TRUE(sequencer().editMode && soundEngine().outputMuted == 1);
    EXPECT_EQ(clockThreads(), ClockThreads{}) << "the machine stood still and goes on so";

    hideInsertedCard();
    EXPECT_FALSE(panel_.cardInserted);
    EXPECT_EQ(takeRedraws(), Names{"reader"});
}

TEST_F(PunchCards, NothingElseIsReadOrSavedMeanwhile) {
    panel_.slots[4].used = true;
    panel_.slots[5] = fullCard();
    panel_.dialogSlot = 5;
    begin();
    tick(40);
    const int columns = panel_.columnsLoaded;
    ASSERT_GT(columns, 0);
    press("bottone_081"); // a column that has passed is the player's again
    panel_.dialogSlot = 4;
    begin();
    saveCard();
    hideInsertedCard();
    EXPECT_EQ(panel_.columnsLoaded, columns);
    EXPECT_FALSE(panel_.slots[4].hasSettings || std::filesystem::exists(kCardFolder));
    tick(kLastTick - 40);
    EXPECT_EQ(panel_.insertedSlot, 5);
    Pattern expected = fullCard().pattern;
    expected.set(5, 0, false);
    EXPECT_EQ(sequencer().pattern.steps, expected.steps);

    panel_.dialogSlot = 6; // an empty slot
    begin();
    EXPECT_TRUE(panel_.cardInserted && !panel_.insertingCard);
}

TEST_F(PunchCards, ResizeKeepsThePartOfTheWay) {
    constexpr LayoutSize kHalf{809, 520};
    shown() = fullCard();
    begin();
    tick(50);
    const double part = (panel_.readerCardY - kStartY) / (kTargetY - kStartY);
    placeReaderCard(kHalf);
    EXPECT_NEAR(panel_.readerCardY, -220.0 + 443.0 * part, 1e-9);
    placeReaderCard({0, 0}); // minimised
    placeReaderCard(kClient);
    EXPECT_NEAR(panel_.readerCardY, kStartY + (kTargetY - kStartY) * part, 1e-9);
    tick(kLastTick - 50);
    placeReaderCard(kHalf);
    EXPECT_EQ(panel_.readerCardY, 223.0);
}

TEST_F(PunchCards, RunningClockTakesTheTempoOverAndNoStepIsPlayed) {
    shown() = fullCard();
    shown().tempo = 0.0f; // 375 ms a step
    sequencer().running = true;
    sequencer().currentStep = 3;
    clockStart(nullptr);
    begin();
    toggleEditMode(); // the player wants to hear what comes
    tick(kLastTick);
    passTimeTo(2000 * kNsPerMs);
    const std::vector<PostedTick> ticks = takePostedTicks();
    ASSERT_EQ(ticks.size(), 12u); // ten each 125 ms; then one still waited for at the former tempo
    EXPECT_EQ(ticks[9], (PostedTick{nullptr, 1250 * kNsPerMs}));
    EXPECT_EQ(ticks[10], (PostedTick{mainWindow(), 1375 * kNsPerMs}));
    EXPECT_EQ(ticks[11], (PostedTick{mainWindow(), 1750 * kNsPerMs}));
    EXPECT_EQ(sequencer().currentStep, 3u);
    EXPECT_EQ(takeVoices(), 0);
}

TEST_F(PunchCards, ClockStandsStillUnderAnotherLeaderAndWithoutPower) {
    shown() = fullCard();
    sequencer().running = sequencer().externalSync = true;
    insert();
    EXPECT_TRUE(recordedSystem().externalSyncShown);
    sequencer().externalSync = false;
    begin();
    press("pw_001");
    tick(kLastTick);
    EXPECT_EQ(clockThreads(), ClockThreads{});
    EXPECT_EQ(recordedSystem().timers, (Timers{{WindowTimer::powerOff, 1000}}));
    EXPECT_EQ(soundEngine().outputMuted, 1);
}

TEST_F(PunchCards, OldCardBringsItsRhythmOnly) {
    shufflePanel();
    const std::string before = livePanel();
    const std::string line = "1000100010001001\n", rhythm = line + line + line + line + line + line;
    shown() = parsePunchCard("_PERCUSSOMATIC_CARD_V1\n" + rhythm).value();
    insert();
    expectPanel(before.substr(0, before.size() - rhythm.size()) + rhythm);
}

TEST_F(PunchCards, OddValuesAreAppliedAsThePanelHasThem) {
    PunchCard odd = fullCard(), zero = odd;
    for (const bool isOdd : {true, false}) {
        PunchCard& card = isOdd ? odd : zero;
        const float value = isOdd ? std::numeric_limits<float>::quiet_NaN() : 0.0f;
        card.lineVolumes.fill(value);
        card.effectSends.fill(value);
        card.masterVolume = card.tempo = card.effectReturn = card.effectRoomSize = value;
        card.effectDamping = card.effectWidth = card.effectPreDelayMs = value;
    }
    odd.effectPreset = std::numeric_limits<std::int32_t>::min();
    shufflePanel();
    shown() = odd;
    insert();
    expectPanel(writePunchCard(zero, 0));
}

// Whatever a hand does at the panel while cards are on their way.
TEST_F(PunchCards, NothingOnTheScreenIsEverStale) {
    const char* const switches[] = {"sw_007", "sw_008", "sw_016", "sw_010", "sw_003", "sw_018"};
    for (int act = 0; act < 100 * kLastTick; ++act) {
        if (!panel_.insertingCard) {
            shuffleCard();
            shufflePanel();
            begin();
        }
        const int control = upTo(2) == 0 ? findControl(switches[upTo(6)])
                                         : stepButtonIndex(upTo(kLineCount), upTo(kStepCount));
        const int choice = upTo(8);
        choice == 0  ? void(pressControl(centreOf(control), kScale))
        : choice < 3 ? onStepTick()
                     : tick();
        ASSERT_EQ(staleControls(), Names{}) << "act " << act << ", control " << control;
    }
}

TEST_F(PunchCards, TitleIsTrimmedAndWrittenToAUsedSlotOnly) {
    panel_.dialogSlot = 9;
    setCardTitle(L"\t EMPTY SLOT ");
    EXPECT_FALSE(shown().used || std::filesystem::exists(kCardFolder));
    saveCard();
    PunchCard expected = parsePunchCard(contents(cardFilePath(9))).value();
    EXPECT_EQ(expected.title, L"EMPTY SLOT");
    sequencer().pattern.set(0, 0, true); // not meant to be saved
    for (const wchar_t* entered : {L" BOSSA  NOVA\t", L" \t ", L"BOSSA  NOVA", L""}) {
        setCardTitle(entered);
        expected.title = std::wstring(entered).size() > 3 ? L"BOSSA  NOVA" : L"";
        EXPECT_EQ(shown().title, expected.title);
        EXPECT_EQ(contents(cardFilePath(9)), writePunchCard(expected, 9));
    }
}

TEST_F(PunchCards, FullDiskAndReadOnlyCardAreTold) {
    saveCard();
    const std::string before = contents(cardFilePath(0));
    sequencer().pattern.steps.fill(1);
    const auto expectTold = [&](const wchar_t* what) {
        shown().pattern = Pattern{};
        saveCard();
        ASSERT_EQ(recordedSystem().problems.size(), 1U) << what;
        EXPECT_NE(recordedSystem().problems[0].find(what), std::wstring::npos);
        recordedSystem().problems.clear();
        EXPECT_EQ(contents(cardFilePath(0)), before);
        EXPECT_EQ(shown().pattern.steps, sequencer().pattern.steps);
    };
#ifndef _WIN32
    {
        const FullDisk disk(before.size() - 1);
        expectTold(L"disk has room");
    }
#endif
    namespace fs = std::filesystem;
    fs::permissions(cardFilePath(0), fs::perms{0222}, fs::perm_options::remove);
    expectTold(L"read-only");
    fs::permissions(cardFilePath(0), fs::perms{0222}, fs::perm_options::add);
}

TEST_F(PunchCards, SaveThatFailsIsToldAndTheSlotKeepsTheRhythm) {
    put(kCardFolder, "a file of the folder's name");
    showPreviousCard();
    EXPECT_EQ(panel_.dialogSlot, kCardSlots - 1) << "they go round";
    sequencer().pattern.set(2, 5, true);
    saveCard();
    ASSERT_EQ(recordedSystem().problems.size(), 1u);
    EXPECT_NE(recordedSystem().problems[0].find(L"card_10.vopcard"), std::wstring::npos);
    EXPECT_TRUE(shown().used && shown().pattern.isSet(2, 5));

    std::filesystem::remove(kCardFolder);
    saveCard();
    EXPECT_EQ(recordedSystem().problems.size(), 1u);
    EXPECT_TRUE(std::filesystem::exists(cardFilePath(9)));
    showNextCard();
    EXPECT_EQ(panel_.dialogSlot, 0);
}

TEST_F(PunchCards, ClicksFindWhatIsDrawnOnTop) {
    using enum PanelCommand;
    constexpr LayoutSize kSmall{404, 260}, kNarrow{330, 200}, kMiddling{600, 380};
    const struct {
        LayoutSize client;
        PixelPoint point;
        PanelCommand closed, open; // the dialog
    } cases[] = {{kClient, {1500, 20}, cards, cards},
                 {kClient, {226, 500}, none, none},
                 {kClient, {227, 500}, none, swallowed},
                 {kClient, {758, 940}, none, swallowed},
                 {kClient, {800, 940}, none, save},
                 // The dialog reaches over the strip.
                 {kSmall, {100, 30}, effects, swallowed},
                 {kSmall, {300, 35}, cards, cancel},
                 // EFFECTS and MIDI lie over INFO, then MIDI and CARDS over BPM.
                 {kNarrow, {92, 13}, info, info},
                 {kNarrow, {85, 13}, effects, effects},
                 {kNarrow, {120, 13}, midi, midi},
                 {kMiddling, {443, 20}, midi, midi},
                 {kMiddling, {500, 20}, cards, cards}};
    for (const auto& [client, point, closed, open] : cases) {
        SCOPED_TRACE(point.x);
        const PanelRects rects = cardPanelRects(client);
        EXPECT_EQ(panelCommandAt(point, rects), closed);
        toggleCardsDialog();
        EXPECT_EQ(panelCommandAt(point, rects), open);
        closeCardsDialog();
    }
}

} // namespace
} // namespace percussomatic
