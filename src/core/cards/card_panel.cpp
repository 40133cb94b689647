// SPDX-License-Identifier: MIT
#include "cards/card_panel.h"

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "card_saving.h"
#include "cards/card_file.h"
#include "cards/card_settings.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/pattern_edits.h"
#include "sequencer/sequencer.h"
#include "sequencer/transport.h"
#include "system_time.h"
#include "tool_windows.h"
#include "window_timers.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

namespace percussomatic {

namespace {

constexpr double kInsertionNs = 1.35e9;
constexpr unsigned kInsertionTimerMs = 16;

PunchCard& shownCard() {
    return cardPanel().slot(cardPanel().dialogSlot);
}

PunchCard& insertedCard() {
    return cardPanel().slot(cardPanel().insertSlot);
}

void writeCardFile(const PunchCard& card, int slot) {
    saveCardLater({.path = cardFilePath(slot),
                   .text = writePunchCard(card, slot),
                   .keepOldFile = cardPanel().unreadFiles[static_cast<std::size_t>(slot)]});
}

void setRotary(std::string_view name, double value) {
    const int index = findControl(name);
    RotaryState& rotary = *rotaryState(index);
    rotary.value = value;
    rotary.dragStartValue = value;
    rotary.dragging = false;
    applyRotary(index);
    redrawControl(index, Repaint::later);
}

void applySliders(const PunchCard& card) {
    for (std::size_t line = 0; line < kLineCount; ++line) {
        const int slider = findControl(control::kLines[line].slider);
        std::uint32_t& offset = controlState().offset(slider);
        const std::uint32_t old = std::exchange(offset, sliderPositionOf(card.lineVolumes[line]));
        if (offset != old) {
            redrawSlider(slider, old);
        }
        if (panelState().sliderDragIndex == slider) {
            panelState().sliderDragIndex = kNoControl; // the next mouse move would undo the card
        }
    }
}

void applySwitches(const PunchCard& card) {
    for (std::size_t position = 0; position < kInstrumentCount; ++position) {
        const int index = findControl(control::instrumentSwitch(position));
        std::uint8_t& bit = controlState().toggleBit(index);
        const std::uint8_t old =
            std::exchange(bit, static_cast<std::uint8_t>(card.instruments[position] != 0));
        if (bit != old) {
            redrawControl(index, Repaint::later);
        }
    }
}

// The card starts above the window and stops below the reader's plate.
void setInsertionPath(Size client) {
    CardPanel& panel = cardPanel();
    const PanelRects rects = cardPanelRects(client);
    panel.insertStartY = -rects.readerCard.height() - 8;
    const int plate = findControl(control::kReaderPlate);
    panel.insertTargetY = plate == kNoControl
                              ? rects.reader.bottom
                              : controlClientRect(plate, viewScale(client)).bottom + 2;
}

// Fraction of the path that the card has covered, 0..1.
double insertionProgress() {
    const CardPanel& panel = cardPanel();
    const double length = panel.insertTargetY - panel.insertStartY;
    return length > 0.0 ? std::clamp((panel.readerCardY - panel.insertStartY) / length, 0.0, 1.0)
                        : 1.0;
}

void moveCard() {
    CardPanel& panel = cardPanel();
    const double t =
        std::clamp(static_cast<double>(counterNs() - panel.insertStartNs) / kInsertionNs, 0.0, 1.0);
    panel.readerCardY =
        panel.insertStartY + (panel.insertTargetY - panel.insertStartY) * t * t * (3.0 - 2.0 * t);
    panel.moving = t < 1.0;
}

void readColumns(int due) {
    CardPanel& panel = cardPanel();
    for (; panel.columnsLoaded < due; ++panel.columnsLoaded) {
        const int step = panel.columnsLoaded;
        const auto column = static_cast<std::uint32_t>(step);
        redrawStepColumn(column); // the player may have set steps there during the insertion
        for (int line = 0; line < kLineCount; ++line) {
            sequencer().pattern.set(line, step, insertedCard().pattern.isSet(line, step));
        }
        redrawStepColumn(column);
    }
}

bool finishInsertion() {
    CardPanel& panel = cardPanel();
    stopTimer(WindowTimer::cardInsertion);
    panel.insertedSlot = panel.insertSlot;
    panel.insertingCard = false;
    panel.cardInserted = true;
    return applyCard(insertedCard());
}

// The card shown in the dialog may be the one in the reader as well.
void redrawShownCard() {
    redrawCardDialog();
    if (cardPanel().cardInserted && cardPanel().insertedSlot == cardPanel().dialogSlot) {
        redrawReader();
    }
}

void showCard(int slot) {
    cardPanel().dialogSlot = slot;
    redrawCardDialog();
}

} // namespace

CardPanel& cardPanel() noexcept {
    static CardPanel panel;
    return panel;
}

void resetCardPanel() {
    cardPanel() = CardPanel{};
}

void loadCards() {
    std::error_code ignored; // the slots stay empty then; a save will report the error
    std::filesystem::create_directories(kCardFolder, ignored);
    for (int slot = 0; slot < kCardSlots; ++slot) {
        const std::filesystem::path path = cardFilePath(slot);
        removeStaleTemporaries(path);
        cardPanel().unreadFiles[static_cast<std::size_t>(slot)] =
            !loadCardFile(path, cardPanel().slot(slot)) &&
            std::filesystem::is_regular_file(path, ignored);
    }
}

PanelRects cardPanelRects(Size client) noexcept {
    return panelRects(client.width, client.height, cardPanel().readerCardY);
}

PanelCommand panelCommandAt(PixelPoint client, const PanelRects& rects) noexcept {
    struct Region {
        const PixelRect& rect;
        PanelCommand command;
    };
    if (cardPanel().cardsDialogOpen) { // drawn over the strip
        const Region buttons[] = {
            {rects.previousCard, PanelCommand::previousCard},
            {rects.nextCard, PanelCommand::nextCard},
            {rects.title, PanelCommand::title},
            {rects.save, PanelCommand::save},
            {rects.load, PanelCommand::load},
            {rects.cancel, PanelCommand::cancel},
            {rects.dialog, PanelCommand::swallowed},
        };
        for (const Region& region : buttons) {
            if (contains(region.rect, client)) {
                return region.command;
            }
        }
    }
    const Region strip[] = {
        {rects.effects, PanelCommand::effects}, {rects.midi, PanelCommand::midi},
        {rects.cards, PanelCommand::cards},     {rects.bpm, PanelCommand::tempo},
        {rects.info, PanelCommand::info},
    };
    for (const Region& region : strip) {
        if (contains(region.rect, client)) {
            return region.command;
        }
    }
    return PanelCommand::none;
}

void toggleCardsDialog() {
    cardPanel().cardsDialogOpen = !cardPanel().cardsDialogOpen;
    redrawPanel();
}

void closeCardsDialog() {
    cardPanel().cardsDialogOpen = false;
    redrawPanel();
}

void showPreviousCard() {
    showCard((cardPanel().dialogSlot + kCardSlots - 1) % kCardSlots);
}

void showNextCard() {
    showCard((cardPanel().dialogSlot + 1) % kCardSlots);
}

void saveCard() {
    if (cardPanel().insertingCard) {
        return;
    }
    PunchCard& card = shownCard();
    captureCard(card);
    card.used = true;
    writeCardFile(card, cardPanel().dialogSlot);
    redrawShownCard();
}

std::wstring shownCardLabel() {
    return cardLabel(shownCard(), cardPanel().dialogSlot);
}

void setCardTitle(std::wstring title) {
    constexpr const wchar_t* kBlanks = L" \t";
    title.erase(title.find_last_not_of(kBlanks) + 1);
    title.erase(0, std::min(title.find_first_not_of(kBlanks), title.size()));
    PunchCard& card = shownCard();
    card.title = std::move(title);
    if (card.used) {
        writeCardFile(card, cardPanel().dialogSlot);
    }
    redrawShownCard();
}

void beginCardInsertion(Size client) {
    CardPanel& panel = cardPanel();
    if (!shownCard().used || panel.insertingCard) {
        return;
    }
    panel.insertSlot = panel.dialogSlot;
    panel.cardsDialogOpen = false;
    panel.insertingCard = true;
    panel.cardInserted = false;
    if (!sequencer().editMode) {
        sequencer().editMode = true;
        redrawControl(findControl(control::kEdit), Repaint::later);
        updateBeatLamp();
    }
    soundEngine().outputMuted = 1;
    soundEngine().stopAllVoicesRequest = 1;
    panel.columnsLoaded = 0;
    sequencer().pattern = Pattern{}; // its buttons are repainted by redrawPanel() below

    setInsertionPath(client);
    panel.readerCardY = panel.insertStartY;
    panel.insertStartNs = counterNs();
    panel.moving = true;
    startTimer(WindowTimer::cardInsertion, kInsertionTimerMs);
    redrawPanel();
}

bool cardInsertionTick() {
    CardPanel& panel = cardPanel();
    if (!panel.insertingCard) {
        return false;
    }
    if (panel.moving) {
        moveCard();
    }
    readColumns(panel.moving ? static_cast<int>(insertionProgress() * kStepCount) : kStepCount);
    redrawReader();
    flushPainting();
    return !panel.moving && finishInsertion();
}

void placeReaderCard(Size client) {
    CardPanel& panel = cardPanel();
    if (!panel.insertingCard && !panel.cardInserted) {
        return;
    }
    const double progress = panel.insertingCard ? insertionProgress() : 1.0;
    setInsertionPath(client);
    panel.readerCardY = panel.insertStartY + (panel.insertTargetY - panel.insertStartY) * progress;
}

void hideInsertedCard() {
    if (cardPanel().cardInserted) {
        cardPanel().cardInserted = false;
        redrawReader();
    }
}

void captureCard(PunchCard& card) {
    card.pattern = sequencer().pattern;
    card.hasSettings = true;
    for (int line = 0; float& volume : card.lineVolumes) {
        volume = lineVolume(line++);
    }
    card.masterVolume = static_cast<float>(panelState().master.value);
    card.tempo = static_cast<float>(panelState().tempo.value);
    for (std::size_t position = 0; position < kInstrumentCount; ++position) {
        card.instruments[position] = isSwitchOn(control::instrumentSwitch(position)) ? 1 : 0;
    }
    card.sequenceLength = supportedLength(sequencer().sequenceLength);
    captureCardEffect(card);
}

bool applyCard(const PunchCard& card) {
    if (!card.used || !card.hasSettings) {
        return false;
    }
    applySliders(card);
    setRotary(control::kMasterRotary, masterRotaryOf(card));
    setRotary(control::kTempoRotary, tempoRotaryOf(card));
    applySwitches(card);
    setSequenceLength(card.sequenceLength);
    applyCardEffect(card);
    refreshFromEngine();
    redrawEffectsBox();
    if (!sequencer().externalSync) {
        clockStart(mainWindow());
    }
    updateBeatLamp();
    flushPainting();
    return true;
}

} // namespace percussomatic
