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

// Files of the commands, and what is said of them on stderr.

struct CardRead {
    PunchCard card;
    CardReport report;
};

// Nothing, with the fault told, for a card that is refused or cannot be read.
std::optional<CardRead> readCard(const std::string& file);

std::optional<std::vector<std::byte>> readWhole(const std::filesystem::path& path);

void tellFault(const std::string& file, std::string_view fault);
void tellRemark(const std::string& file, const CardRemark& remark, std::string_view kind = "");

// Throws Misuse when the second operand is the card itself, by whatever name.
void keepCard(const Arguments& arguments);

// An exit code; a failure is told.
int outcome(SaveResult result, const std::string& file);

// Writes a file whole or not at all.
int writeOutput(const std::string& file, std::string_view bytes);

} // namespace percussomatic::tool
