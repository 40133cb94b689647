// SPDX-License-Identifier: MIT
#pragma once

#include "arguments.h"
#include "cards/card_file.h"
#include "cards/punch_card.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic::tool {

// Reading the files of the commands, and reporting errors on stderr.

struct LoadedCard {
    PunchCard card;
    CardReport report;
};

// Reports the error and returns nullopt if the card is refused or cannot be read.
std::optional<LoadedCard> readCard(const std::string& file);

// The whole file; nullopt if it cannot be read.
std::optional<std::vector<std::byte>> readFile(const std::filesystem::path& path);

// "FILE: FAULT" and "FILE:LINE: KIND TEXT".
void reportError(const std::string& file, std::string_view fault);
void reportRemark(const std::string& file, const CardMessage& remark, std::string_view kind = "");

// Throws UsageError if the second operand names the same file as the first, the card.
void requireSeparateOutput(const Arguments& arguments);

} // namespace percussomatic::tool
