#include "files.h"

#include <fstream>
#include <iostream>
#include <stdexcept>

namespace percussomatic::tool {

std::optional<CardRead> readCard(const std::string& file) {
    const auto bytes = readCardBytes(pathOf(file));
    if (!bytes) {
        tellFault(file, "cannot be read; expected a punch card");
        return {};
    }
    CardReport report;
    try {
        if (auto card = parsePunchCard(*bytes, &report)) {
            return CardRead{std::move(*card), std::move(report)};
        }
    } catch (const std::logic_error&) { // NOLINT(bugprone-empty-catch): the report has the fault
    }
    tellRemark(file, report.fault.value_or(CardRemark{}));
    return {};
}

std::optional<std::vector<std::byte>> readWhole(const std::filesystem::path& path) {
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

void tellFault(const std::string& file, std::string_view fault) {
    std::cerr << file << ": " << fault << '\n';
}

void tellRemark(const std::string& file, const CardRemark& remark, std::string_view kind) {
    std::cerr << file << ':' << remark.line << ": " << kind << remark.text << '\n';
}

void keepCard(const Arguments& arguments) {
    std::error_code error; // one that is not there yet is another file
    if (std::filesystem::equivalent(pathOf(arguments.operands[0]), pathOf(arguments.operands[1]),
                                    error)) {
        throw Misuse(arguments.operands[1] + " is the card itself; expected another file to write");
    }
}

int outcome(SaveResult result, const std::string& file) {
    switch (result) {
    case SaveResult::saved:
        return kDone;
    case SaveResult::noFolder:
        tellFault(file, "the folder cannot be created; expected a place for one");
        break;
    case SaveResult::readOnly:
        tellFault(file, "is marked read-only; expected a file that may be replaced");
        break;
    case SaveResult::notAFile:
        tellFault(file, "is not a file; expected the name of a file");
        break;
    case SaveResult::notWritten:
        tellFault(file, "cannot be written; expected an existing folder that may be written to and "
                        "room on the disk");
        break;
    }
    return kFailed;
}

int writeOutput(const std::string& file, std::string_view bytes) {
    FileReplacement output(pathOf(file));
    output.write(bytes);
    return outcome(output.commit(), file);
}

} // namespace percussomatic::tool
