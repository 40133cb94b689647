// SPDX-License-Identifier: MIT
#include "cards/card_file.h"

#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace percussomatic {

namespace {

constexpr std::size_t kMaxCardBytes = std::size_t{1} << 20;

bool createFolder(const std::filesystem::path& folder) {
    std::error_code error;
    if (folder.empty() || std::filesystem::is_directory(folder, error)) {
        return true;
    }
    std::filesystem::create_directories(folder, error);
    return std::filesystem::is_directory(folder, error);
}

} // namespace

std::filesystem::path cardFilePath(int slot) {
    return std::filesystem::path(kCardFolder) / ("card_" + std::to_string(slot + 1) + ".vopcard");
}

std::optional<std::string> readCardBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes(kMaxCardBytes, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (file.bad() || !file.is_open()) {
        return std::nullopt;
    }
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

bool loadCardFile(const std::filesystem::path& path, PunchCard& slot) {
    const auto bytes = readCardBytes(path);
    if (!bytes) {
        return false;
    }
    try {
        auto card = parsePunchCard(*bytes);
        if (card) {
            slot = std::move(*card);
        }
        return card.has_value();
    } catch (const std::logic_error&) { // a number could not be converted
        return false;
    }
}

SaveResult saveCardFile(const std::filesystem::path& path, std::string_view text) {
    if (!createFolder(path.parent_path())) {
        return SaveResult::noFolder;
    }
    FileReplacement file(path);
    file.write(text);
    return file.commit();
}

std::wstring saveErrorText(SaveResult result, const std::filesystem::path& path) {
    const auto quoted = [](std::filesystem::path name) {
        return L'"' + name.make_preferred().wstring() + L'"';
    };
    const std::wstring file = quoted(path);
    const std::wstring kept = L"\n\nThe rhythm stays in its slot until you quit.";
    switch (result) {
    case SaveResult::saved:
        return {};
    case SaveResult::noFolder:
        return L"The card was not saved as " + file + L": the folder " +
               quoted(path.parent_path()) +
               L" cannot be created. If a file has that name, move it away; then save again." +
               kept;
    case SaveResult::readOnly:
        return file +
               L" is read-only and was not overwritten. Clear the read-only attribute in the "
               L"file's properties, or save to another slot." +
               kept;
    case SaveResult::notAFile:
        return L"The card was not saved: " + file +
               L" is not a file. Move it away; then save again." + kept;
    case SaveResult::notWritten:
        break;
    }
    return file +
           L" could not be written. Any earlier version of that file is unchanged. Check "
           L"that the disk has room and that you can write to the folder; then save again." +
           kept;
}

} // namespace percussomatic
