// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace percussomatic {

// Saves cards on another thread, because flushing to disk takes longer than rendering an audio
// block. All functions are called on the GUI thread.

struct PendingCard {
    std::filesystem::path path;
    std::string text;
    // The file that was there when the program started could not be read: keep it under another
    // name.
    bool keepOldFile = false;
};

// Queues a card to be saved; saves are carried out in order. What the player has to know is shown
// as soon as it is known.
void saveCardLater(const PendingCard& card);

// Shows the problems since the last call in message boxes.
void showSavingProblems();

// Waits until every queued card has been saved, at most ten seconds, and shows the problems.
void finishSaving();

} // namespace percussomatic
