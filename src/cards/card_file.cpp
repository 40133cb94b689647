#include "cards/card_file.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace percussomatic {

namespace {

constexpr std::size_t kLargestCard = std::size_t{1} << 20;
constexpr int kTemporaryNames = 9; // the first may be taken by other savers, dead or alive

std::filesystem::path temporaryName(std::filesystem::path target, int number) {
    target += "." + std::to_string(number) + ".saving";
    return target;
}

// A link stays, its file is replaced.
std::filesystem::path withoutLink(const std::filesystem::path& target) {
    std::error_code error;
    if (!std::filesystem::is_symlink(target, error)) {
        return target;
    }
    const auto real = std::filesystem::canonical(target, error);
    return error ? target : real;
}

// No permission to write for anybody, which is how every system shows the player's mark. Asking for
// it beforehand matters: replacing a file needs no permission on the file itself.
bool isMarkedReadOnly(std::filesystem::perms permissions) {
    using std::filesystem::perms;
    return (permissions & (perms::owner_write | perms::group_write | perms::others_write)) ==
           perms::none;
}

SaveResult obstacleAt(const std::filesystem::path& target) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(target, error);
    if (!std::filesystem::exists(status)) {
        return SaveResult::saved;
    }
    if (!std::filesystem::is_regular_file(status)) {
        return SaveResult::notAFile;
    }
    return isMarkedReadOnly(status.permissions()) ? SaveResult::readOnly : SaveResult::saved;
}

bool makeFolder(const std::filesystem::path& folder) {
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
    std::string bytes(kLargestCard, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (file.bad() || !file.is_open()) {
        return {};
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
    } catch (const std::logic_error&) { // a number that cannot be converted
        return false;
    }
}

SaveResult saveCardFile(const std::filesystem::path& path, std::string_view text) {
    if (!makeFolder(path.parent_path())) {
        return SaveResult::noFolder;
    }
    FileReplacement file(path);
    file.write(text);
    return file.take();
}

std::wstring saveFaultText(SaveResult result, const std::filesystem::path& path) {
    const auto quoted = [](std::filesystem::path name) {
        return L'"' + name.make_preferred().wstring() + L'"';
    };
    const std::wstring file = quoted(path);
    const std::wstring kept = L"\n\nThe rhythm is still in its slot.";
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
               L" is marked read-only and was not overwritten. Take the mark off in the "
               L"file's properties, or save to another slot." +
               kept;
    case SaveResult::notAFile:
        return L"The card was not saved: " + file +
               L" is not a file. Move it away; then save again." + kept;
    case SaveResult::notWritten:
        break;
    }
    return file +
           L" could not be written. An earlier card of that name is unharmed. See that the "
           L"disk has room and that the folder may be written to; then save again." +
           kept;
}

void sweepUnfinished(const std::filesystem::path& target) {
    // Of another instance that saves right now nothing may be taken. Its file is judged by age: a
    // save takes milliseconds, and between its last byte and its new name nobody has it open.
    const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::minutes(1);
    const std::filesystem::path real = withoutLink(target);
    for (int number = 1; number <= kTemporaryNames; ++number) {
        const std::filesystem::path left = temporaryName(real, number);
        std::error_code error;
        if (is_regular_file(std::filesystem::symlink_status(left, error)) &&
            last_write_time(left, error) < longAgo && !error) {
            std::filesystem::remove(left, error);
        }
    }
}

FileReplacement::FileReplacement(const std::filesystem::path& target)
    : target_(withoutLink(target)), result_(obstacleAt(target_)) {
    for (int number = 1; number <= kTemporaryNames && !file_ && result_ == SaveResult::saved;
         ++number) {
        temporary_ = temporaryName(target_, number);
        file_.reset(createNewFile(temporary_));
    }
    if (!file_) {
        temporary_.clear();
        fail();
    }
}

FileReplacement::~FileReplacement() {
    file_.reset();
    if (!temporary_.empty()) {
        std::error_code error;
        std::filesystem::remove(temporary_, error);
    }
}

void FileReplacement::fail() {
    file_.reset();
    if (result_ == SaveResult::saved) {
        result_ = SaveResult::notWritten;
    }
}

void FileReplacement::write(std::string_view bytes) {
    if (file_ && std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
        fail();
    }
}

SaveResult FileReplacement::finish() {
    if (file_ && (!flushToDisk(file_.get()) || std::fclose(file_.release()) != 0)) {
        fail();
    }
    return result_;
}

SaveResult FileReplacement::take() {
    if (finish() == SaveResult::saved) {
        std::error_code error;
        if (const auto old = std::filesystem::status(target_, error); exists(old)) {
            std::filesystem::permissions(temporary_, old.permissions(), error);
        }
        std::filesystem::rename(temporary_, target_, error); // replaces on every system
        if (error) {
            fail();
        } else {
            temporary_.clear();
        }
    }
    return result_;
}

} // namespace percussomatic
