#pragma once

#include <filesystem>
#include <string>

namespace percussomatic {

// Writes cards beside the rest: a flush down to the disk takes longer than a block of sound. The
// window implements it; the native tests save at once. GUI thread.

// Saves a card, after those that were asked for before. What goes wrong is shown to the player as
// soon as it is known.
void saveCardLater(const std::filesystem::path& path, const std::string& text);

// What has gone wrong since the last call, in message boxes.
void showSavingProblems();

// Returns when everything is on the disk, or has been shown not to be.
void finishSaving();

} // namespace percussomatic
