#pragma once

#include "cards/punch_card.h"
#include "ui/panel_rects.h"

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
};

CardPanel& cardPanel() noexcept;

// Ten empty slots, dialog closed, reader empty.
void resetCardPanel();

// Makes the folder of the cards where it is missing, clears away what killed saves have left there
// and reads every slot that has a file.
void loadCards();

// The rectangles for a client area of that size, the card in the reader where it is now.
PanelRects cardPanelRects(LayoutSize client) noexcept;

// What a click asks for. The windows that some of them open are the shell's.
enum class PanelCommand {
    none,      // nothing of the strip or the dialog lies there
    swallowed, // inside the dialog, but no button
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

// Boxes of the strip that overlap in a small window: the one drawn last takes the click.
PanelCommand panelCommandAt(PixelPoint client, const PanelRects& rects) noexcept;

void toggleCardsDialog();
void closeCardsDialog();
void showPreviousCard();
void showNextCard();

// Takes the live rhythm and the whole panel into the slot shown and writes its file. Ignored while
// a card is read in: half a rhythm would be kept. A failure is told; the slot keeps the rhythm.
void saveCard();

// Blanks at the ends are cut. Writes the slot's file again if it holds a card.
void setCardTitle(std::wstring title);

// Starts reading the card of the slot shown, in a client area of that size. The machine is in edit
// mode and silent from here on, until the player leaves edit mode.
void beginCardInsertion(LayoutSize client);

// The animation's timer.
void cardInsertionTick();

// Keeps the card in the reader in its place after the window has changed its size.
void placeReaderCard(LayoutSize client);

void hideInsertedCard();

// The live panel into a card and back. Applying does nothing for a card without settings.
void captureCard(PunchCard& card);
void applyCard(const PunchCard& card);

} // namespace percussomatic
