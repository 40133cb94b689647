// SPDX-License-Identifier: MIT
#include "cards/card_file.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>
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

std::wstring quotedPath(std::filesystem::path path) {
    return L'"' + path.make_preferred().wstring() + L'"';
}

// A name for the unread file that no other file has.
std::filesystem::path unreadName(const std::filesystem::path& path) {
    std::filesystem::path first = path;
    first += ".unread";
    std::filesystem::path name = first;
    std::error_code error;
    for (int number = 2; std::filesystem::exists(std::filesystem::symlink_status(name, error));
         ++number) {
        name = first;
        name += "." + std::to_string(number);
    }
    return name;
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
    constexpr std::chrono::milliseconds kRetryPause(50);
    auto bytes = readCardBytes(path);
    if (std::error_code error; !bytes && std::filesystem::is_regular_file(path, error)) {
        std::this_thread::sleep_for(kRetryPause); // another program may have had it open
        bytes = readCardBytes(path);
    }
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

std::wstring writeCard(CardWriter& writer, const PendingCard& card) {
    std::error_code error;
    if (!card.keepOldFile || writer.keptFiles.contains(card.path) ||
        !std::filesystem::is_regular_file(card.path, error)) {
        return saveErrorText(saveCardFile(card.path, card.text), card.path);
    }
    // The new card first, so that a full disk leaves the old one where it is.
    FileReplacement file(card.path);
    file.write(card.text);
    if (const SaveResult result = file.finish(); result != SaveResult::saved) {
        return saveErrorText(result, card.path);
    }
    const std::filesystem::path kept = unreadName(card.path);
    if (!renameFile(card.path, kept)) {
        return saveErrorText(SaveResult::notWritten, card.path);
    }
    writer.keptFiles.insert(card.path);
    const std::wstring problem = saveErrorText(file.commit(), card.path);
    return quotedPath(card.path) +
           L" could not be read when the program started. That file is now " + quotedPath(kept) +
           (problem.empty() ? L"; the card has been saved in its place." : L".\n\n" + problem);
}

std::wstring saveErrorText(SaveResult result, const std::filesystem::path& path) {
    const std::wstring file = quotedPath(path);
    const std::wstring kept = L"\n\nThe rhythm stays in its slot until you quit.";
    switch (result) {
    case SaveResult::saved:
        return {};
    case SaveResult::noFolder:
        return L"The card was not saved as " + file + L": the folder " +
               quotedPath(path.parent_path()) +
               L" cannot be created. Check that you have permission to write there and that no "
               L"file has that name; then save again." +
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
           L"that the disk has room, that you have permission to write to the folder and that no "
           L"other program, such as a virus scanner, is using the file; then save again." +
           kept;
}

} // namespace percussomatic
