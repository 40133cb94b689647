// SPDX-License-Identifier: MIT
#pragma once

#include "card_saving.h"
#include "cards/punch_card.h"
#include "files/file_replacement.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace percussomatic {

// Reading and writing card files.

inline constexpr const char* kCardFolder = "PunchCards"; // in the working directory

std::filesystem::path cardFilePath(int slot); // "PunchCards/card_1.vopcard" for slot 0

// Reads a card into the slot. Returns false and leaves the slot unchanged if the file cannot be
// read, even at a second attempt after 50 ms, or if the card is refused.
bool loadCardFile(const std::filesystem::path& path, PunchCard& slot);

// The first MiB of a file, far more than a card needs; nullopt if the file cannot be read.
std::optional<std::string> readCardBytes(const std::filesystem::path& path);

// Replaces the file as a whole; creates missing folders first.
SaveResult saveCardFile(const std::filesystem::path& path, std::string_view text);

// Saves cards one after the other. Not thread-safe.
struct CardWriter {
    std::set<std::filesystem::path> keptFiles; // already renamed in this run
};

// Saves a card. Its old file, if it is to be kept, is first renamed to "card_1.vopcard.unread", or
// ".unread.2" and so on if that exists. Returns a message box text for the player; empty if there
// is nothing to tell.
std::wstring writeCard(CardWriter& writer, const PendingCard& card);

// Message box text that names the file, the problem and a remedy. Empty for SaveResult::saved.
std::wstring saveErrorText(SaveResult result, const std::filesystem::path& path);

} // namespace percussomatic
