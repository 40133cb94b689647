#include "cards/card_panel.h"

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "sequencer/front_panel.h"
#include "sequencer/transport.h"
#include "support/recorded_screen.h"
#include "support/recorded_system.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic {
namespace {

using Names = std::vector<std::string>;
using Timers = std::map<WindowTimer, unsigned>;

constexpr LayoutSize kClient{1618, 1040};            // on a screen of 1920 x 1080
constexpr double kStartY = -439.0, kTargetY = 443.0; // of a card in that window
constexpr int kTickMs = 16, kLastTick = 85;          // the first after 1.35 s

std::uint8_t& toggleBit(std::string_view name) {
    return controlState().toggleBits[static_cast<std::size_t>(findControl(name))];
}

std::uint32_t& sliderOffset(std::string_view name) {
    return controlState().sliderOffset[static_cast<std::size_t>(findControl(name))];
}

void turn(std::string_view rotary, double value) {
    rotaryState(findControl(rotary))->value = value;
    applyRotary(findControl(rotary));
}

void press(int control) {
    const double scale = viewScale(kClient.width, kClient.height);
    const PixelRect rect = controlClientRect(control, scale);
    pressControl({(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2}, scale);
    releaseControls();
}

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

std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A card's text with the line of that key replaced.
std::string withLine(std::string text, const std::string& key, const std::string& value) {
    const std::size_t begin = text.find("\n" + key + "=") + 1;
    return text.replace(begin, text.find('\n', begin) - begin, key + "=" + value);
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
        namespace fs = std::filesystem;
        for (int number = 1; folder_.empty() || !fs::create_directory(folder_); ++number) {
            folder_ = fs::temp_directory_path() / ("punch_cards_" + std::to_string(number));
        }
        fs::current_path(folder_);
        soundEngine().setEffectEnabled(false);
        resetRecordedScreen();
    }
    ~PunchCards() override {
        std::filesystem::current_path(cameFrom_);
        std::filesystem::remove_all(folder_);
    }

    int upTo(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
    float unit() { return static_cast<float>(upTo(1'000'001)) / 1e6f; }

    void shufflePanel() {
        turn("rotary_001", unit());
        turn("rotary_002", unit());
        for (const RhythmLine& line : kRhythmLines) {
            toggleBit(line.switchA) = static_cast<std::uint8_t>(upTo(2));
            toggleBit(line.switchB) = static_cast<std::uint8_t>(upTo(2));
            sliderOffset(line.slider) = static_cast<std::uint32_t>(upTo(kSliderTravel + 1));
        }
        for (std::uint8_t& step : sequencer().pattern.steps) {
            step = static_cast<std::uint8_t>(upTo(2));
        }
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
    void loadText(const std::string& text) {
        loadCards(); // makes the folder
        std::ofstream(cardFilePath(0), std::ios::binary) << text;
        resetCardPanel();
        loadCards();
        ASSERT_TRUE(shown().used);
    }

    FreshInstrument instrument_;
    CardPanel& panel_ = cardPanel();
    std::int64_t nowMs_ = 0;
    std::mt19937 random_{1965}; // the engine's numbers are the same everywhere
    std::filesystem::path cameFrom_ = std::filesystem::current_path(), folder_;
};

TEST_F(PunchCards, SavedPanelComesBackWhole) {
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        const int slot = panel_.dialogSlot = round % kCardSlots;
        shufflePanel();
        const std::string saved = livePanel();
        saveCard();
        EXPECT_EQ(takeRedraws(), Names{"card dialog"});
        const std::string bytes = contentsOf(cardFilePath(slot));

        shufflePanel();
        if (round % 2 != 0) { // another day
            resetCardPanel();
            loadCards();
            panel_.dialogSlot = slot;
        }
        panelState().rotaryDragIndex = findControl("rotary_002");
        panelState().tempo.dragging = true;
        insert();
        dragRotary(-1000, false); // the hand has lost it
        expectPanel(saved);
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_EQ(recordedSystem().syncStatus, syncStatusText());
        saveCard();
        EXPECT_EQ(contentsOf(cardFilePath(slot)), bytes);
    }
    EXPECT_TRUE(recordedSystem().problems.empty());
}

TEST_F(PunchCards, FileHasThePanelInItsOrder) {
    for (int line = 0; line < kLineCount; ++line) {
        sliderOffset("slider_00" + std::to_string(line + 1)) =
            static_cast<std::uint32_t>(130 * line);
        sequencer().pattern.set(line, 3 * line, true);
    }
    turn("rotary_001", 0.5);
    turn("rotary_002", 0.25);
    toggleBit("sw_002") = toggleBit("sw_028") = 1;
    sequencer().sequenceLength = 14; // no switch for it
    sequencer().sampleIndices.fill(-1);
    selectPreset(3);
    soundEngine().setEffectEnabled(true);
    for (std::uint32_t sample = 0; sample < kInstrumentCount; ++sample) {
        soundEngine().setSend(sample, static_cast<float>(sample) / 16.0f);
    }
    saveCard();
    EXPECT_EQ(contentsOf("PunchCards/card_1.vopcard"),
              "_PERCUSSOMATIC_CARD_V4\nTITLE=PUNCH CARD 01\nMASTER_VOLUME=0.500000\n"
              "TEMPO_NORMALIZED=0.250000\nSEQUENCE_LENGTH=16\n"
              "LINE_VOLUMES=0.000000,0.200000,0.400000,0.600000,0.800000,1.000000\n"
              "INSTRUMENTS=0,1,0,0,0,0,1,0,0,0,0,0\nEFFECT_ENABLED=1\nEFFECT_PRESET=3\n"
              "EFFECT_RETURN=0.380000\nEFFECT_ROOM_SIZE=0.970000\nEFFECT_DAMPING=0.580000\n"
              "EFFECT_WIDTH=0.880000\nEFFECT_PREDELAY_MS=32.000000\n"
              "EFFECT_SENDS=0.000000,0.125000,0.250000,0.375000,0.500000,0.625000,"
              "0.062500,0.187500,0.312500,0.437500,0.562500,0.687500\n"
              "1000000000000000\n0001000000000000\n0000001000000000\n0000000001000000\n"
              "0000000000001000\n0000000000000001\n");
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
    EXPECT_TRUE(sequencer().editMode);
    EXPECT_EQ(soundEngine().outputMuted, 1) << "until the player leaves edit mode";
    EXPECT_EQ(clockThreads(), ClockThreads{}) << "the machine stood still and goes on so";

    hideInsertedCard();
    EXPECT_FALSE(panel_.cardInserted);
    EXPECT_EQ(takeRedraws(), Names{"reader"});
    hideInsertedCard();
    cardInsertionTick();
    EXPECT_EQ(takeRedraws(), Names{});
}

TEST_F(PunchCards, NothingElseIsReadOrSavedMeanwhile) {
    panel_.slots[4].used = true;
    panel_.slots[5] = fullCard();
    panel_.dialogSlot = 5;
    begin();
    tick(40);
    const int columns = panel_.columnsLoaded;
    ASSERT_GT(columns, 0);
    press(stepButtonIndex(5, 0)); // a column that has passed is the player's again
    panel_.dialogSlot = 4;
    begin();
    saveCard();
    hideInsertedCard();
    EXPECT_EQ(panel_.columnsLoaded, columns);
    EXPECT_FALSE(panel_.slots[4].hasSettings || std::filesystem::exists(kCardFolder));
    tick(kLastTick - 40);
    EXPECT_TRUE(panel_.cardInserted);
    EXPECT_EQ(panel_.insertedSlot, 5);
    Pattern expected = fullCard().pattern;
    expected.set(5, 0, false);
    EXPECT_EQ(sequencer().pattern.steps, expected.steps);

    takeRedraws();
    panel_.dialogSlot = 6; // an empty slot
    begin();
    EXPECT_TRUE(panel_.cardInserted && !panel_.insertingCard);
    EXPECT_EQ(takeRedraws(), Names{});
}

TEST_F(PunchCards, ResizeKeepsThePartOfTheWay) {
    constexpr LayoutSize kHalf{809, 520};
    placeReaderCard(kHalf);
    EXPECT_EQ(panel_.readerCardY, 0.0) << "an empty reader";
    shown() = fullCard();
    begin();
    tick(50);
    const double part = (panel_.readerCardY - kStartY) / (kTargetY - kStartY);
    placeReaderCard(kHalf);
    EXPECT_NEAR(panel_.readerCardY, -220.0 + 443.0 * part, 1e-9);
    placeReaderCard({0, 0}); // minimised
    placeReaderCard(kClient);
    EXPECT_NEAR(panel_.readerCardY, kStartY + (kTargetY - kStartY) * part, 1e-9);
    placeReaderCard(kHalf);
    tick(kLastTick - 50);
    EXPECT_EQ(panel_.readerCardY, 223.0);
    placeReaderCard(kClient);
    EXPECT_EQ(panel_.readerCardY, kTargetY);
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
    std::vector<PostedTick> ticks;
    for (const int ms : {125, 250, 375, 500, 625, 750, 875, 1000, 1125, 1250}) {
        ticks.push_back({nullptr, ms * kNsPerMs});
    }
    ticks.push_back({mainWindow(), 1375 * kNsPerMs}); // waited for at the former tempo
    ticks.push_back({mainWindow(), 1750 * kNsPerMs});
    EXPECT_EQ(takePostedTicks(), ticks);
    EXPECT_EQ(sequencer().currentStep, 3u);
    const auto& voices = soundEngine().voices;
    EXPECT_TRUE(std::none_of(voices.begin(), voices.end(), [](auto& v) { return v.active; }));
}

TEST_F(PunchCards, ClockStandsStillUnderAnotherLeaderAndWithoutPower) {
    shown() = fullCard();
    sequencer().running = sequencer().externalSync = true;
    insert();
    EXPECT_EQ(clockThreads(), ClockThreads{});
    EXPECT_TRUE(recordedSystem().externalSyncShown);

    sequencer().externalSync = false;
    begin();
    press(findControl("pw_001"));
    tick(kLastTick);
    EXPECT_EQ(clockThreads(), ClockThreads{});
    EXPECT_EQ(recordedSystem().timers, (Timers{{WindowTimer::powerOff, 1000}}));
    toggleEditMode();
    EXPECT_EQ(soundEngine().outputMuted, 1);
    EXPECT_EQ(staleControls(), Names{});
}

TEST_F(PunchCards, OldCardBringsItsRhythmOnly) {
    shufflePanel();
    const std::string before = livePanel();
    const std::string line = "1000100010001001\n", rhythm = line + line + line + line + line + line;
    loadText("_PERCUSSOMATIC_CARD_V1\n" + rhythm);
    insert();
    expectPanel(before.substr(0, before.size() - rhythm.size()) + rhythm);
    EXPECT_TRUE(panel_.cardInserted);
}

// A card's text with something else for every number with decimals.
std::string withNumbers(const std::string& text, std::string_view other) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t digits = text.find_first_not_of("0123456789", at);
        const bool decimals = digits != at && digits != std::string::npos && text[digits] == '.';
        const std::size_t end = decimals ? digits + 7 : at + 1; // six decimals
        result.append(decimals ? other : std::string_view(text).substr(at, 1));
        at = end;
    }
    return result;
}

TEST_F(PunchCards, OddValuesAreAppliedAsThePanelHasThem) {
    const std::string good = writePunchCard(fullCard(), 0);
    shufflePanel();
    loadText(withLine(withNumbers(good, "nan"), "EFFECT_PRESET", "-2147483648"));
    insert();
    expectPanel(withNumbers(good, "0.000000"));

    const struct {
        std::uint32_t before, step;
        const char* onCard;
        std::uint32_t after, stepAfter;
    } lengths[] = {{9, 8, "7", 16, 8}, {16, 12, "5", 5, 0}, {16, 5, "5", 5, 0}, {16, 4, "5", 5, 4}};
    sequencer().running = true;
    for (const auto& [before, step, onCard, after, stepAfter] : lengths) {
        SCOPED_TRACE(step);
        sequencer().sequenceLength = before;
        sequencer().currentStep = step;
        updateBeatLamp();
        loadText(withLine(good, "SEQUENCE_LENGTH", onCard));
        begin();
        toggleEditMode(); // the step on which it stands shows
        tick(kLastTick);
        EXPECT_EQ(sequencer().sequenceLength, after);
        EXPECT_EQ(sequencer().currentStep, stepAfter);
        EXPECT_EQ(staleControls(), Names{});
    }
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
        switch (upTo(8)) {
        case 0:
            press(control);
            break;
        case 1:
        case 2:
            onStepTick();
            break;
        default:
            tick();
            break;
        }
        ASSERT_EQ(staleControls(), Names{}) << "act " << act << ", control " << control;
    }
}

TEST_F(PunchCards, DialogTurnsRoundAtItsEnds) {
    showPreviousCard();
    EXPECT_EQ(panel_.dialogSlot, 9);
    showPreviousCard();
    EXPECT_EQ(panel_.dialogSlot, 8);
    showNextCard();
    showNextCard();
    EXPECT_EQ(panel_.dialogSlot, 0);
    EXPECT_EQ(takeRedraws(), Names(4, "card dialog"));
}

TEST_F(PunchCards, TitleIsTrimmedAndWrittenToAUsedSlotOnly) {
    panel_.dialogSlot = 9;
    setCardTitle(L"\t EMPTY SLOT ");
    EXPECT_EQ(shown().title, L"EMPTY SLOT");
    EXPECT_FALSE(shown().used || std::filesystem::exists(kCardFolder));

    saveCard();
    const std::string saved = contentsOf(cardFilePath(9));
    sequencer().pattern.set(0, 0, true); // not meant to be saved
    const struct {
        const wchar_t *entered, *title;
        const char* written;
    } cases[] = {{L" BOSSA  NOVA\t", L"BOSSA  NOVA", "BOSSA  NOVA"},
                 {L" \t ", L"", "PUNCH CARD 10"},
                 {L"X", L"X", "X"},
                 {L"", L"", "PUNCH CARD 10"}};
    for (const auto& [entered, title, written] : cases) {
        setCardTitle(entered);
        EXPECT_EQ(shown().title, title);
        EXPECT_EQ(contentsOf(cardFilePath(9)), withLine(saved, "TITLE", written));
    }
}

TEST_F(PunchCards, FailedSaveIsToldOnceAndKeepsTheRhythm) {
    std::ofstream(kCardFolder) << "in the way";
    loadCards();
    shufflePanel();
    const std::string saved = livePanel();
    panel_.dialogSlot = 2;
    saveCard();
    const auto& problems = recordedSystem().problems;
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].find(L"card_3.vopcard"), std::wstring::npos);
    EXPECT_EQ(contentsOf(kCardFolder), "in the way");

    shufflePanel();
    insert();
    expectPanel(saved);
    std::filesystem::remove(kCardFolder);
    saveCard();
    EXPECT_EQ(problems.size(), 1u);
    EXPECT_TRUE(std::filesystem::exists(cardFilePath(2)));
}

TEST_F(PunchCards, BrokenFilesLeaveTheirSlotsAlone) {
    const std::string good = writePunchCard(fullCard(), 0);
    const std::string titled = withLine(good, "TITLE", "GOOD");
    std::filesystem::create_directories(cardFilePath(9));
    int slot = 0;
    for (const std::string& text :
         {withLine(good, "MASTER_VOLUME", "loud"), titled,
          withLine(good, "EFFECT_PRESET", "2147483648"), withLine(good, "TEMPO_NORMALIZED", "1e99"),
          good.substr(0, good.size() - 2), withLine(good, "SEQUENCE_LENGTH", ""), std::string(),
          titled}) {
        std::ofstream(cardFilePath(slot++), std::ios::binary) << text;
    }
    for (PunchCard& card : panel_.slots) {
        card.title = L"BEFORE";
    }
    loadCards();
    for (std::size_t i = 0; i < kCardSlots; ++i) {
        const bool loaded = i == 1 || i == 7;
        EXPECT_EQ(panel_.slots[i].used, loaded) << i;
        EXPECT_EQ(panel_.slots[i].title, loaded ? L"GOOD" : L"BEFORE") << i;
    }
    EXPECT_TRUE(recordedSystem().problems.empty());
}

TEST_F(PunchCards, ClicksFindWhatIsDrawnOnTop) {
    using enum PanelCommand;
    constexpr LayoutSize kSmall{404, 260}, kNarrow{330, 200}, kMiddling{600, 380};
    const struct {
        LayoutSize client;
        PixelPoint point;
        PanelCommand closed, open; // the dialog
    } cases[] = {{kClient, {100, 20}, info, info},
                 {kClient, {500, 20}, tempo, tempo},
                 {kClient, {1500, 20}, cards, cards},
                 {kClient, {1400, 20}, midi, midi},
                 {kClient, {1300, 20}, effects, effects},
                 {kClient, {300, 20}, none, none},
                 {kClient, {226, 500}, none, none},
                 {kClient, {227, 500}, none, swallowed},
                 {kClient, {280, 520}, none, previousCard},
                 {kClient, {1340, 520}, none, nextCard},
                 {kClient, {700, 940}, none, title},
                 {kClient, {758, 940}, none, swallowed},
                 {kClient, {800, 940}, none, save},
                 {kClient, {900, 940}, none, load},
                 {kClient, {1300, 100}, none, cancel},
                 // The dialog reaches over the strip.
                 {kSmall, {100, 30}, effects, swallowed},
                 {kSmall, {300, 35}, cards, cancel},
                 // EFFECTS and MIDI lie over INFO, then MIDI and CARDS over BPM.
                 {kNarrow, {92, 13}, info, info},
                 {kNarrow, {85, 13}, effects, effects},
                 {kNarrow, {120, 13}, midi, midi},
                 {kMiddling, {456, 20}, tempo, tempo},
                 {kMiddling, {443, 20}, midi, midi},
                 {kMiddling, {500, 20}, cards, cards}};
    for (const auto& [client, point, closed, open] : cases) {
        SCOPED_TRACE(testing::Message() << client.width << ": " << point.x << ", " << point.y);
        const PanelRects rects = cardPanelRects(client);
        EXPECT_EQ(panelCommandAt(point, rects), closed);
        toggleCardsDialog();
        EXPECT_EQ(panelCommandAt(point, rects), open);
        closeCardsDialog();
    }
}

} // namespace
} // namespace percussomatic
