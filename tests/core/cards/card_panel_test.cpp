#include "cards/card_panel.h"

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "input/panel_controls.h"
#include "panel/panel_state.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"
#include "sequencer/transport.h"
#include "support/fake_screen.h"
#include "support/fake_system.h"
#include "support/own_folder.h"
#include "support/panel_actions.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#ifndef _WIN32
#include "support/full_disk.h"
#endif

namespace percussomatic {
namespace {

using Timers = std::map<WindowTimer, unsigned>;

constexpr Size kClient{kClientWidth, kClientHeight};
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
        resetFakeScreen();
    }

    int upTo(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
    float unit() { return static_cast<float>(upTo(1'000'001)) / 1e6f; }

    void shufflePanel() {
        for (const char* rotary : {"rotary_001", "rotary_002"}) {
            rotaryState(findControl(rotary))->value = unit();
            applyRotary(findControl(rotary));
        }
        for (const control::Line& line : control::kLines) {
            toggleBit(line.switches[0]) = static_cast<std::uint8_t>(upTo(2));
            toggleBit(line.switches[1]) = static_cast<std::uint8_t>(upTo(2));
            sliderOffset(line.slider) = static_cast<std::uint32_t>(upTo(kSliderTravel + 1));
        }
        std::ranges::generate(sequencer().pattern.steps,
                              [&] { return static_cast<std::uint8_t>(upTo(2)); });
        sequencer().sequenceLength = kSequenceLengths[static_cast<std::size_t>(upTo(7))];
        SoundEngine& engine = soundEngine();
        selectPreset(upTo(4));
        for (std::uint32_t sample = 0; sample < kInstrumentCount; ++sample) {
            engine.setSend(sample, unit());
        }
        engine.setEffectSettings({unit(), unit(), unit(), unit(), 200.0f * unit()});
        engine.setEffectEnabled(upTo(2) != 0);
        resetFakeScreen();
    }
    PunchCard& shown() { return panel_.slot(panel_.dialogSlot); }
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
        EXPECT_FALSE(panelState().tempo.dragging);
        EXPECT_EQ(panelState().sliderDragIndex, kNoControl);
        expectPanel(saved);
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_EQ(fakeSystem().syncStatus, syncStatusText());
        saveCard();
        EXPECT_EQ(contents(cardFilePath(slot)), bytes);
    }
}

TEST_F(PunchCards, CardSlidesThroughAndIsReadColumnByColumn) {
    shufflePanel();
    captureCard(shown());
    shown().used = true;
    const std::string atTheEnd = livePanel();
    shufflePanel();
    toggleCardsDialog();
    panel_.cardInserted = true; // the card before
    begin();
    EXPECT_EQ(soundEngine().outputMuted, 1);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest, 1);
    EXPECT_TRUE(sequencer().editMode && panel_.insertingCard && !panel_.cardsDialogOpen);
    EXPECT_EQ(fakeSystem().timers, (Timers{{WindowTimer::cardInsertion, kTickMs}}));
    EXPECT_EQ(staleControls(), Names{});

    PunchCard expected; // the settings wait for the end
    captureCard(expected);
    expected.pattern = {};
    for (int now = 0, column = 0; now < kLastTick; ++now) {
        SCOPED_TRACE(now);
        const double t = now * kTickMs / 1350.0, part = t * t * (3.0 - 2.0 * t);
        EXPECT_NEAR(panel_.readerCardY, kStartY + (kTargetY - kStartY) * part, 1e-9);
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
    EXPECT_TRUE(panel_.cardInserted && !panel_.insertingCard);
    EXPECT_EQ(fakeSystem().timers, Timers{});
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
    ASSERT_GT(panel_.columnsLoaded, 0);
    press("bottone_081"); // a column that has passed is the player's again
    panel_.dialogSlot = 4;
    begin();
    saveCard();
    hideInsertedCard();
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
    constexpr Size kHalf{809, 520};
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

TEST_F(PunchCards, OldCardBringsItsRhythmOnly) {
    shufflePanel();
    const std::string before = livePanel();
    const std::string line = "1000100010001001\n", rhythm = line + line + line + line + line + line;
    shown() = parsePunchCard("_PERCUSSOMATIC_CARD_V1\n" + rhythm).value();
    insert();
    expectPanel(before.substr(0, before.size() - rhythm.size()) + rhythm);
}

TEST_F(PunchCards, TitleIsTrimmedAndWrittenToAUsedSlotOnly) {
    setCardTitle(L"\t EMPTY SLOT ");
    EXPECT_FALSE(shown().used || std::filesystem::exists(kCardFolder));
    saveCard();
    PunchCard expected = parsePunchCard(contents(cardFilePath(0))).value();
    EXPECT_EQ(expected.title, L"EMPTY SLOT");
    sequencer().pattern.set(0, 0, true); // not meant to be saved
    for (const auto& [entered, title] :
         {std::pair(L" BOSSA  NOVA\t", L"BOSSA  NOVA"), std::pair(L" \t ", L"")}) {
        setCardTitle(entered);
        expected.title = title;
        EXPECT_EQ(contents(cardFilePath(0)), writePunchCard(expected, 0));
    }
}

TEST_F(PunchCards, SaveThatFailsIsToldAndTheSlotKeepsTheRhythm) {
    put(kCardFolder, "a file of the folder's name");
    showPreviousCard();
    EXPECT_EQ(panel_.dialogSlot, kCardSlots - 1) << "they go round";
    const auto expectTold = [&](const wchar_t* what) {
        sequencer().pattern.set(2, 5, !sequencer().pattern.isSet(2, 5));
        saveCard();
        ASSERT_EQ(fakeSystem().problems.size(), 1u) << what;
        EXPECT_NE(fakeSystem().problems[0].find(what), std::wstring::npos);
        fakeSystem().problems.clear();
        EXPECT_EQ(shown().pattern.steps, sequencer().pattern.steps);
    };
    expectTold(L"card_10.vopcard");
    std::filesystem::remove(kCardFolder);
    saveCard();
    EXPECT_TRUE(fakeSystem().problems.empty());
    const std::string before = contents(cardFilePath(9));
#ifndef _WIN32
    {
        const FullDisk disk(before.size() - 1);
        expectTold(L"disk has room");
    }
#endif
    namespace fs = std::filesystem;
    fs::permissions(cardFilePath(9), fs::perms{0222}, fs::perm_options::remove);
    expectTold(L"read-only");
    fs::permissions(cardFilePath(9), fs::perms{0222}, fs::perm_options::add);
    EXPECT_EQ(contents(cardFilePath(9)), before);
    showNextCard();
    EXPECT_EQ(panel_.dialogSlot, 0);
}

TEST_F(PunchCards, ClicksFindWhatIsDrawnOnTop) {
    using enum PanelCommand;
    const auto expectFound = [](Size client, PixelPoint point, PanelCommand closed,
                                PanelCommand open) {
        SCOPED_TRACE(point.x);
        const PanelRects rects = cardPanelRects(client);
        EXPECT_EQ(panelCommandAt(point, rects), closed);
        toggleCardsDialog();
        EXPECT_EQ(panelCommandAt(point, rects), open);
        closeCardsDialog();
    };
    expectFound(kClient, {1500, 20}, cards, cards);
    expectFound(kClient, {226, 500}, none, none);
    expectFound(kClient, {227, 500}, none, swallowed);
    expectFound(kClient, {800, 940}, none, save);
    // The dialog reaches over the strip.
    expectFound({404, 260}, {100, 30}, effects, swallowed);
    expectFound({404, 260}, {300, 35}, cards, cancel);
    // EFFECTS and MIDI lie over INFO, then MIDI and CARDS over BPM.
    expectFound({330, 200}, {92, 13}, info, info);
    expectFound({330, 200}, {85, 13}, effects, effects);
    expectFound({600, 380}, {443, 20}, midi, midi);
    expectFound({600, 380}, {500, 20}, cards, cards);
}

} // namespace
} // namespace percussomatic
