// SPDX-License-Identifier: MIT
#pragma once

#include "arguments.h"
#include "cards/card_file.h"
#include "cards/punch_card.h"

#include <cstddef>
#include <filesystem>
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

struct ReadRecording {
    std::vector<std::byte> bytes;
    std::string fault; // empty if the file has been read
};

// Reads a regular file of up to 32 MiB, which is about a minute of 24-bit stereo at 96 kHz. Waits
// for no pipe and reads no endless device.
ReadRecording readRecording(const std::filesystem::path& path);

// Why the system cannot use the path as a folder; empty if it can.
std::string folderFault(const std::filesystem::path& path);

// For messages on a terminal: control characters become '?', in text that is not UTF-8
// everything but ASCII.
std::string printable(std::string_view text);

// "FILE: FAULT" and "FILE:LINE: KIND TEXT".
void reportError(const std::string& file, std::string_view fault);
void reportRemark(const std::string& file, const CardMessage& remark, std::string_view kind = "");

// Throws UsageError if the second operand names the same file as the first, the card.
void requireSeparateOutput(const Arguments& arguments);

} // namespace percussomatic::tool
