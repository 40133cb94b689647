// SPDX-License-Identifier: MIT
#pragma once

#include "cards/punch_card.h"
#include "files/file_replacement.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace percussomatic {

// Cards on disk.

inline constexpr const char* kCardFolder = "PunchCards"; // in the working directory

std::filesystem::path cardFilePath(int slot); // "PunchCards/card_1.vopcard" for slot 0

// Reads a card into the slot and marks it used. False leaves the slot as it was: the file cannot be
// read, the card is refused or a number in it cannot be converted.
bool loadCardFile(const std::filesystem::path& path, PunchCard& slot);

// The first MiB of a file, which is far more than a card; nullopt if it cannot be read.
std::optional<std::string> readCardBytes(const std::filesystem::path& path);

// Creates missing folders first.
SaveResult saveCardFile(const std::filesystem::path& path, std::string_view text);

// What happened and what to do, for a message box; names the file. Empty for SaveResult::saved.
std::wstring saveErrorText(SaveResult result, const std::filesystem::path& path);

} // namespace percussomatic
