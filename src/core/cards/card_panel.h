// SPDX-License-Identifier: MIT
#pragma once

#include "cards/punch_card.h"
#include "panel/panel_rects.h"

#include <array>
#include <cstdint>
#include <string>

namespace percussomatic {

// The ten card slots, the dialog that shows them, and the reader, which copies a card's rhythm into
// the pattern column by column while the card slides through. GUI thread.

struct CardPanel {
    std::array<PunchCard, kCardSlots> slots{};
    std::array<bool, kCardSlots> unreadFiles{}; // by slot: it has a file that could not be read
    bool cardsDialogOpen = false;
    int dialogSlot = 0; // the card shown in the dialog

    bool insertingCard = false; // a card is moving through the reader
    bool cardInserted = false;  // a card has stopped below the reader
    int insertSlot = 0;
    int insertedSlot = 0;
    int columnsLoaded = 0;    // of the moving card, 0..16
    double readerCardY = 0.0; // upper edge, client pixels

    std::int64_t insertStartNs = 0; // on the monotonic counter
    double insertStartY = 0.0;
    double insertTargetY = 0.0;
    bool moving = false;

    PunchCard& slot(int index) { return slots[static_cast<std::size_t>(index)]; }
};

CardPanel& cardPanel() noexcept;

// Ten empty slots, dialog closed, reader empty.
void resetCardPanel();

// Creates the card folder if it is missing, removes temporary files left by interrupted saves and
// reads every slot that has a file. A file that cannot be read leaves its slot empty and is kept
// under another name when a card is saved there.
void loadCards();

// Rectangles for a client area of this size and the current position of the card in the reader.
PanelRects cardPanelRects(Size client) noexcept;

// What a click on the strip or in the card dialog does.
enum class PanelCommand {
    none,      // outside the strip and the dialog
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

// Boxes of the strip overlap in a small window; the one drawn last takes the click.
PanelCommand panelCommandAt(PixelPoint client, const PanelRects& rects) noexcept;

void toggleCardsDialog();
void closeCardsDialog();
void showPreviousCard();
void showNextCard();

// Stores the current rhythm and all panel settings in the slot shown and writes its file. No-op
// while a card is being read, because the pattern is incomplete then. A failed write is reported to
// the player; the slot keeps the rhythm.
void saveCard();

// Title of the card shown in the dialog, or the slot's default label.
std::wstring shownCardLabel();

// Sets the title of the card shown, without leading and trailing blanks. Rewrites the file of a
// slot that holds a card.
void setCardTitle(std::wstring title);

// Starts reading the card of the slot shown, in a client area of this size. The instrument is
// silent and in edit mode until the player leaves edit mode. No-op for an empty slot and while a
// card is being read.
void beginCardInsertion(Size client);

// Advances the insertion; called by its timer. True if that has applied the card's settings.
bool cardInsertionTick();

// Repositions the card in the reader after the window has been resized.
void placeReaderCard(Size client);

void hideInsertedCard();

// Copy the panel to a card and back. applyCard is a no-op and returns false for a card without
// settings.
void captureCard(PunchCard& card);
bool applyCard(const PunchCard& card);

} // namespace percussomatic
