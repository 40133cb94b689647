// SPDX-License-Identifier: MIT
#include "files.h"

#include <fstream>
#include <iostream>
#include <stdexcept>

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

std::optional<std::vector<std::byte>> readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<std::byte> bytes;
    for (char byte = 0; file.get(byte);) {
        bytes.push_back(static_cast<std::byte>(byte));
    }
    if (!file.is_open() || file.bad()) {
        return {};
    }
    return bytes;
}

void reportError(const std::string& file, std::string_view fault) {
    std::cerr << file << ": " << fault << '\n';
}

void reportRemark(const std::string& file, const CardMessage& remark, std::string_view kind) {
    std::cerr << file << ':' << remark.line << ": " << kind << remark.text << '\n';
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
