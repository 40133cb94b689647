// SPDX-License-Identifier: MIT
#include "cards/card_panel.h"

#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "cards/card_file.h"
#include "input/panel_input.h"
#include "midi/midi_glide.h"
#include "support/own_folder.h"
#include "support/panel_actions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <random>
#include <tuple>
#include <utility>

namespace percussomatic {
namespace {

using namespace std::chrono_literals;

constexpr Size kClient{kClientWidth, kClientHeight};
constexpr double kStartY = -439.0, kTargetY = 443.0; // of a card in a window of that size
constexpr int kTickMs = 16, kLastTick = 85;          // the first after 1.35 s

// The panel as it would be saved.
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

struct PunchCards : testing::Test, FreshInstrument {
    PunchCards() {
        soundEngine().setEffectEnabled(false);
        resetFakeScreen();
    }

    int upTo(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
    float unit() { return static_cast<float>(upTo(1'000'001)) / 1e6f; }

    // Returns the panel as it would be saved.
    std::string shufflePanel() {
        PunchCard card;
        panelState().master.value = card.masterVolume = unit();
        panelState().tempo.value = card.tempo = unit();
        applyRotary(findControl(control::kMasterRotary));
        applyRotary(findControl(control::kTempoRotary));
        for (std::size_t line = 0; line < kLineCount; ++line) {
            const int offset = upTo(kSliderTravel + 1);
            sliderOffset(control::kLines[line].slider) = static_cast<std::uint32_t>(offset);
            card.lineVolumes[line] = static_cast<float>(offset) / 650.0f;
        }
        SoundEngine& engine = soundEngine();
        selectPreset(card.effectPreset = upTo(4));
        for (std::size_t position = 0; position < kInstrumentCount; ++position) {
            toggleBit(control::instrumentSwitch(position)) = card.instruments[position] =
                static_cast<std::uint8_t>(upTo(2));
            engine.setSend(sampleIndexOfSwitch(position), card.effectSends[position] = unit());
        }
        for (std::uint8_t& step : card.pattern.steps) {
            step = static_cast<std::uint8_t>(upTo(2));
        }
        sequencer().pattern = card.pattern;
        sequencer().sequenceLength = card.sequenceLength =
            kSequenceLengths[static_cast<std::size_t>(upTo(7))];
        card.effect = {unit(), unit(), unit(), unit(), 200.0f * unit()};
        engine.setEffectSettings(card.effect);
        engine.setEffectEnabled(card.effectEnabled = upTo(2) != 0);
        resetFakeScreen();
        return writePunchCard(card, 0);
    }
    PunchCard& shown() { return panel_.slot(panel_.dialogSlot); }
    void captureShown() {
        captureCard(shown());
        shown().used = true;
    }
    static void begin() { beginCardInsertion(kClient); }
    void tick(int count = 1) {
        for (; count > 0; --count) {
            nowMs_ += kTickMs;
            passTimeTo(nowMs_ * kNsPerMs);
            fireTimer(WindowTimer::cardInsertion);
        }
    }
    void insert() {
        begin();
        tick(kLastTick);
    }

    OwnFolder folder_;
    CardPanel& panel_ = cardPanel();
    std::int64_t nowMs_ = 0;
    std::mt19937 random_{1965}; // produces the same numbers everywhere
};

TEST_F(PunchCards, InsertionRestoresEverythingThatWasSaved) {
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        const int slot = panel_.dialogSlot = round % kCardSlots;
        const std::string saved = shufflePanel();
        EXPECT_EQ(livePanel(), saved);
        saveCard();
        EXPECT_EQ(takeRedraws(), Names{"card dialog"});
        const std::string bytes = contents(cardFilePath(slot));

        shufflePanel();
        if (round % 2 != 0) { // restart the program
            resetCardPanel();
            loadCards();
            panel_.dialogSlot = slot;
        }
        panelState().rotaryDragIndex = findControl(control::kTempoRotary);
        panelState().tempo.dragging = true;
        panelState().sliderDragIndex = findControl("slider_002");
        insert();
        EXPECT_FALSE(panelState().tempo.dragging);
        EXPECT_EQ(panelState().sliderDragIndex, kNoControl);
        expectPanel(saved);
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_EQ(fakeSystem().syncStatus, syncStatusText());
        EXPECT_EQ(fakeSystem().shownSend, barPosition(soundEngine(), kSendBarId));
        EXPECT_EQ(std::ranges::count(takeRedraws(), "effects window"), 1);
        saveCard();
        setCardTitle({});
        EXPECT_EQ(takeRedraws(), (Names{"card dialog", "reader", "card dialog", "reader"}));
        EXPECT_EQ(contents(cardFilePath(slot)), bytes);
    }
}

TEST_F(PunchCards, CardIsReadColumnByColumnAsItSlides) {
    shufflePanel();
    captureShown();
    shufflePanel();
    toggleCardsDialog();
    panel_.cardInserted = true; // the previous card
    begin();
    EXPECT_EQ(soundEngine().outputMuted, 1);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest, 1);
    EXPECT_TRUE(sequencer().editMode && panel_.insertingCard);
    EXPECT_FALSE(panel_.cardsDialogOpen || panel_.cardInserted);
    EXPECT_EQ(fakeSystem().timers[WindowTimer::cardInsertion], 16u);
    EXPECT_EQ(staleControls(), Names{});

    PunchCard expected; // settings are applied at the end
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
        takeRedraws();
        tick();
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_EQ(std::ranges::count(takeRedraws(), "reader"), 1);
    }
    expectPanel(writePunchCard(shown(), 0));
    EXPECT_EQ(panel_.readerCardY, kTargetY);
    EXPECT_TRUE(panel_.cardInserted && !panel_.insertingCard);
    EXPECT_TRUE(fakeSystem().timers.empty());
    EXPECT_TRUE(sequencer().editMode && soundEngine().outputMuted == 1);
    EXPECT_EQ(clockThreadCount(), 0) << "the rhythm was not started";

    hideInsertedCard();
    EXPECT_FALSE(panel_.cardInserted);
    EXPECT_EQ(takeRedraws(), Names{"reader"});
}

TEST_F(PunchCards, StepsCanBeEditedDuringTheInsertion) {
    shown().used = true;
    shown().pattern.set(5, 0, true);
    begin();
    tick(40);
    press("bottone_081"); // line 6, step 1, which has been read
    press("bottone_096"); // line 6, step 16, which will be overwritten
    tick(kLastTick - 40);
    EXPECT_EQ(sequencer().pattern, Pattern{});
    EXPECT_EQ(staleControls(), Names{});
}

TEST_F(PunchCards, NoOtherCardIsReadOrSavedDuringTheInsertion) {
    panel_.slots[4].used = true;
    shufflePanel();
    captureShown();
    begin();
    tick(40);
    panel_.dialogSlot = 4;
    begin();
    saveCard();
    hideInsertedCard();
    EXPECT_FALSE(panel_.slots[4].hasSettings || std::filesystem::exists(kCardFolder));
    tick(kLastTick - 40);
    EXPECT_EQ(panel_.insertedSlot, 0);
    EXPECT_EQ(sequencer().pattern, panel_.slots[0].pattern);
    panel_.dialogSlot = 6; // an empty slot
    begin();
    EXPECT_TRUE(panel_.cardInserted && !panel_.insertingCard);
}

TEST_F(PunchCards, ResizeKeepsTheProgressOfTheCard) {
    constexpr Size kHalf{809, 520};
    captureShown();
    begin();
    tick(50);
    const double progress = (panel_.readerCardY - kStartY) / (kTargetY - kStartY);
    placeReaderCard(kHalf);
    EXPECT_NEAR(panel_.readerCardY, -220.0 + 443.0 * progress, 1e-9);
    placeReaderCard({0, 0}); // minimised
    placeReaderCard(kClient);
    EXPECT_NEAR(panel_.readerCardY, kStartY + (kTargetY - kStartY) * progress, 1e-9);
    tick(kLastTick - 50);
    placeReaderCard(kHalf);
    EXPECT_EQ(panel_.readerCardY, 223.0);
}

TEST_F(PunchCards, RunningClockContinuesAtTheTempoOfTheCard) {
    captureShown();
    shown().tempo = 0.0f; // 375 ms per step
    sequencer().running = true;
    clockStart(nullptr);
    insert();
    passTimeTo(2000 * kNsPerMs);
    const std::vector<PostedTick> ticks = takePostedTicks();
    ASSERT_EQ(ticks.size(), 12u); // every 125 ms until the interval that had begun
    EXPECT_EQ(ticks[10], (PostedTick{mainWindow(), 1375 * kNsPerMs}));
    EXPECT_EQ(ticks[11], (PostedTick{mainWindow(), 1750 * kNsPerMs}));
}

TEST_F(PunchCards, CardWithoutSettingsChangesOnlyThePattern) {
    shufflePanel();
    const std::string before = livePanel();
    shown().used = true;
    shown().pattern = std::exchange(sequencer().pattern, Pattern{});
    shown().tempo = 1.0f;
    glideTo(findControl(control::kTempoRotary), 1.0);
    insert();
    expectPanel(before);
    EXPECT_TRUE(fakeSystem().timers.contains(WindowTimer::midiGlide));
}

TEST_F(PunchCards, CardWithSettingsEndsPendingGlidesButNotLaterOnes) {
    captureShown();
    glideTo(findControl(control::kTempoRotary), 1.0);
    insert();
    EXPECT_TRUE(fakeSystem().timers.empty());
    glideTo(findControl(control::kTempoRotary), 1.0);
    tick(); // its message was already queued
    EXPECT_TRUE(fakeSystem().timers.contains(WindowTimer::midiGlide));
}

TEST_F(PunchCards, TitleIsTrimmedAndSavedUnlessTheSlotIsEmpty) {
    setCardTitle(L"\t EMPTY SLOT ");
    EXPECT_FALSE(shown().used || std::filesystem::exists(kCardFolder));
    saveCard();
    PunchCard expected = parsePunchCard(contents(cardFilePath(0))).value();
    EXPECT_EQ(expected.title, L"EMPTY SLOT");
    sequencer().pattern.set(0, 0, true); // must not be saved
    setCardTitle(L" BOSSA  NOVA\t");
    expected.title = L"BOSSA  NOVA";
    EXPECT_EQ(contents(cardFilePath(0)), writePunchCard(expected, 0));
    setCardTitle(L" \t ");
    EXPECT_EQ(shown().title, L"");
}

TEST_F(PunchCards, FailedSaveIsReportedAndTheSlotKeepsTheRhythm) {
    namespace fs = std::filesystem;
    showPreviousCard(); // wraps around
    saveCard();
    const fs::path path = cardFilePath(kCardSlots - 1);
    const std::string before = contents(path);
    fs::permissions(path, fs::perms{0222}, fs::perm_options::remove);
    sequencer().pattern.set(2, 5, true);
    saveCard();
    ASSERT_EQ(fakeSystem().problems.size(), 1u);
    EXPECT_NE(fakeSystem().problems[0].find(L"card_10.vopcard\" is read-only"), std::wstring::npos);
    EXPECT_EQ(shown().pattern, sequencer().pattern);
    fs::permissions(path, fs::perms{0222}, fs::perm_options::add);
    EXPECT_EQ(contents(path), before);
    toggleCardsDialog();
    takeRedraws();
    showNextCard();
    EXPECT_EQ(panel_.dialogSlot, 0);
    closeCardsDialog();
    toggleCardsDialog();
    EXPECT_EQ(takeRedraws(), (Names{"card dialog", "panel", "panel"}));
}

TEST_F(PunchCards, FileThatCouldNotBeReadIsKeptUnderAnotherName) {
    loadCards();
    EXPECT_TRUE(std::filesystem::is_empty(kCardFolder));
    saveCard();
    const std::string card = contents(cardFilePath(0));
    const std::string unread = cardFilePath(1).string() + ".unread";
    std::filesystem::create_directories(cardFilePath(2));
    put(cardFilePath(1), "another program's card");
    put(unread, "an older one");
    const std::string leftover = cardFilePath(9).string() + ".1.saving";
    put(leftover, "half a ca");
    std::filesystem::last_write_time(leftover, std::filesystem::last_write_time(unread) - 2min);
    loadCards();
    EXPECT_TRUE(panel_.slots[0].used);
    EXPECT_FALSE(panel_.slots[1].used);
    EXPECT_EQ(panel_.unreadFiles, (std::array<bool, kCardSlots>{false, true}));
    showNextCard();
    for (int save = 0; save < 2; ++save) {
        saveCard();
        EXPECT_EQ(loadCardFile(cardFilePath(1), panel_.slots[5]), true);
        EXPECT_EQ(contents(unread), "an older one");
        EXPECT_EQ(contents(unread + ".2"), "another program's card");
        ASSERT_EQ(fakeSystem().problems.size(), 1u);
        EXPECT_NE(fakeSystem().problems[0].find(L".unread.2\"; the card has"), std::wstring::npos);
    }
    EXPECT_EQ(contents(cardFilePath(0)), card);
    EXPECT_EQ(filesIn(kCardFolder), 5);
}

TEST_F(PunchCards, ClickGoesToWhatIsDrawnOnTop) {
    using enum PanelCommand;
    const std::tuple<Size, PixelPoint, PanelCommand, PanelCommand> cases[] = {
        {kClient, {226, 500}, none, none},
        {kClient, {227, 500}, none, swallowed},
        {kClient, {800, 940}, none, save},
        {{404, 200}, {240, 20}, effects, swallowed}, // the dialog covers the strip
        {{404, 200}, {300, 25}, midi, cancel}};
    for (const auto& [client, point, closed, open] : cases) {
        panel_.cardsDialogOpen = false;
        EXPECT_EQ(panelCommandAt(point, cardPanelRects(client)), closed) << point.x;
        panel_.cardsDialogOpen = true;
        EXPECT_EQ(panelCommandAt(point, cardPanelRects(client)), open) << point.x;
    }
}

} // namespace
} // namespace percussomatic
