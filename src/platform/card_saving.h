// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace percussomatic {

// Writes cards off the GUI thread: flushing to the disk takes longer than a block of sound. The
// native tests' fake saves at once. GUI thread.

// Saves a card after all that were passed before. A failure is shown to the player as soon as it is
// known.
void saveCardLater(const std::filesystem::path& path, const std::string& text);

// Shows the failures since the last call in message boxes.
void showSavingProblems();

// Returns when every card is on the disk or its failure has been shown.
void finishSaving();

} // namespace percussomatic
