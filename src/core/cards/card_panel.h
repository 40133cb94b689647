// SPDX-License-Identifier: MIT
#pragma once

#include "cards/punch_card.h"
#include "panel/panel_rects.h"

#include <array>
#include <cstdint>
#include <string>

namespace percussomatic {

// The ten card memories, the dialog in which they are chosen, and the reader that takes a card's
// rhythm into the machine column by column while the card slides past. GUI thread.

struct CardPanel {
    std::array<PunchCard, kCardSlots> slots{};
    bool cardsDialogOpen = false;
    int dialogSlot = 0; // the card shown in the dialog

    bool insertingCard = false; // a card is on its way through the reader
    bool cardInserted = false;  // a card has come to rest below it
    int insertSlot = 0;
    int insertedSlot = 0;
    int columnsLoaded = 0;    // 0..16 of the card on its way
    double readerCardY = 0.0; // upper edge, client pixels

    std::int64_t insertStartNs = 0; // of the monotonic counter
    double insertStartY = 0.0;
    double insertTargetY = 0.0;
    bool moving = false;

    PunchCard& slot(int index) { return slots[static_cast<std::size_t>(index)]; }
};

CardPanel& cardPanel() noexcept;

// Ten empty slots, dialog closed, reader empty.
void resetCardPanel();

// Creates the cards' folder if it is missing, removes what killed saves have left there and reads
// every slot that has a file.
void loadCards();

// The rectangles for a client area of that size, with the card in the reader where it is now.
PanelRects cardPanelRects(Size client) noexcept;

// What a click on the strip or in the card dialog asks for.
enum class PanelCommand {
    none,      // nothing of the strip or the dialog lies there
    swallowed, // inside the dialog, but on no button
    info,
    tempo,
    cards,
    midi,
    effects,
    previousCard,
    nextCard,
    title,
    save,
    load,
    cancel
};

// Where boxes of the strip overlap in a small window, the one drawn last takes the click.
PanelCommand panelCommandAt(PixelPoint client, const PanelRects& rects) noexcept;

void toggleCardsDialog();
void closeCardsDialog();
void showPreviousCard();
void showNextCard();

// Takes the current rhythm and all panel settings into the slot shown and writes its file. No-op
// while a card is being read in: half a rhythm would be saved. A failure is reported to the player;
// the slot keeps the rhythm.
void saveCard();

// Label of the card shown in the dialog: its title, or the slot's default.
std::wstring shownCardLabel();

// Blanks at the ends are cut. Writes the slot's file again if it holds a card.
void setCardTitle(std::wstring title);

// Starts reading the card of the slot shown, in a client area of that size. From now on the
// instrument is in edit mode and silent, until the player leaves edit mode. No-op for an empty slot
// and while a card is being read in.
void beginCardInsertion(Size client);

// The animation's timer.
void cardInsertionTick();

// Keeps the card in the reader in its place after the window's size has changed.
void placeReaderCard(Size client);

void hideInsertedCard();

// From the panel to a card and back. Applying is a no-op for a card without settings.
void captureCard(PunchCard& card);
void applyCard(const PunchCard& card);

} // namespace percussomatic
