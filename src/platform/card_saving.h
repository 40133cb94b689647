// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace percussomatic {

// Saves cards on another thread, because flushing to disk takes longer than rendering an audio
// block. All functions are called on the GUI thread.

// Queues a card to be saved; saves are carried out in order. A failure is shown to the player as
// soon as it is known.
void saveCardLater(const std::filesystem::path& path, const std::string& text);

// Shows the failures since the last call in message boxes.
void showSavingProblems();

// Blocks until every queued card has been saved or its failure has been shown.
void finishSaving();

} // namespace percussomatic
