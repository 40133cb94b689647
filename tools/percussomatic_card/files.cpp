// SPDX-License-Identifier: MIT
#include "files.h"

#include "cards/card_text.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace percussomatic::tool {

std::optional<LoadedCard> readCard(const std::string& file) {
    const auto bytes = readCardBytes(pathFromUtf8(file));
    if (!bytes) {
        reportError(file, "cannot be read; expected a punch card");
        return {};
    }
    CardReport report;
    try {
        if (auto card = parsePunchCard(*bytes, &report)) {
            return LoadedCard{std::move(*card), std::move(report)};
        }
    } catch (const std::logic_error&) { // NOLINT(bugprone-empty-catch): the report names the fault
    }
    reportRemark(file, report.fault.value_or(CardMessage{}));
    return {};
}

ReadRecording readRecording(const std::filesystem::path& path) {
    constexpr std::uintmax_t kMaxBytes = std::uintmax_t{32} << 20;
    std::error_code error;
    const auto status = std::filesystem::status(path, error); // follows links
    if (!error && !is_regular_file(status)) {
        return {{}, "not a regular file"};
    }
    const std::uintmax_t size = error ? 0 : std::filesystem::file_size(path, error);
    if (error) {
        return {{}, error.message()};
    }
    if (size > kMaxBytes) {
        return {{}, "larger than 32 MiB"};
    }
    std::vector<std::byte> bytes(static_cast<std::size_t>(size));
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!file.is_open() || file.bad()) {
        return {{}, std::generic_category().message(errno)};
    }
    bytes.resize(static_cast<std::size_t>(file.gcount())); // less if it has just been truncated
    return {std::move(bytes), {}};
}

std::string folderFault(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!error && !is_directory(status)) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    return error ? error.message() : "";
}

std::string printable(std::string_view text) {
    if (const auto wide = wideFromUtf8(text)) {
        return printableUtf8(*wide);
    }
    std::string shown(text);
    std::ranges::replace_if(
        shown, [](unsigned char c) { return c < ' ' || c >= 0x7F; }, '?');
    return shown;
}

void reportError(const std::string& file, std::string_view fault) {
    std::cerr << printable(file) << ": " << printable(fault) << '\n';
}

void reportRemark(const std::string& file, const CardMessage& remark, std::string_view kind) {
    std::cerr << printable(file) << ':' << remark.line << ": " << kind << remark.text << '\n';
}

void requireSeparateOutput(const Arguments& arguments) {
    std::error_code error; // set if the output does not exist yet: then it is a separate file
    if (std::filesystem::equivalent(pathFromUtf8(arguments.operands[0]),
                                    pathFromUtf8(arguments.operands[1]), error)) {
        throw UsageError(arguments.operands[1] +
                         " is the card itself; expected a different output file");
    }
}

} // namespace percussomatic::tool
