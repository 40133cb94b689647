// SPDX-License-Identifier: MIT
#include "files/file_replacement.h"

#include "durable_file.h"

#include <chrono>
#include <string>
#include <system_error>
#include <thread>

namespace percussomatic {

namespace {

constexpr int kTemporaryNames = 9; // other processes, running or killed, may have taken some

std::filesystem::path temporaryName(std::filesystem::path target, int number) {
    target += "." + std::to_string(number) + ".saving";
    return target;
}

// A symbolic link is kept; the file that it points to is replaced or created.
std::filesystem::path resolvedLink(std::filesystem::path target) {
    constexpr int kMaxLinks = 40; // as on Linux; more of them are a circle
    std::error_code error;
    for (int links = 0; links < kMaxLinks && std::filesystem::is_symlink(target, error); ++links) {
        target = target.parent_path() / std::filesystem::read_symlink(target, error);
    }
    return target;
}

// No write permission for anybody, which is how std::filesystem reports the read-only attribute.
// Has to be checked, because renaming over a file needs no permission on the file itself.
bool isReadOnly(std::filesystem::perms permissions) {
    using std::filesystem::perms;
    return (permissions & (perms::owner_write | perms::group_write | perms::others_write)) ==
           perms::none;
}

// `saved` if the target can be replaced or does not exist.
SaveResult checkTarget(const std::filesystem::path& target) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(target, error);
    if (!std::filesystem::exists(status)) {
        const auto itself = std::filesystem::symlink_status(target, error);
        return is_symlink(itself) ? SaveResult::notAFile : SaveResult::saved; // a circle of links
    }
    if (!std::filesystem::is_regular_file(status)) {
        return SaveResult::notAFile;
    }
    return isReadOnly(status.permissions()) ? SaveResult::readOnly : SaveResult::saved;
}

// Retries while another program uses the file.
template <typename Attempt>
bool succeeds(Attempt attempt) {
    FileResult result = attempt();
    for (const int pauseMs : {10, 20, 50, 100, 200, 300, 400}) {
        if (result != FileResult::busy) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
        result = attempt();
    }
    return result == FileResult::done;
}

} // namespace

bool renameFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    return succeeds([&] { return replaceFile(from, to); });
}

bool temporaryNamesTaken(const std::filesystem::path& target) {
    const std::filesystem::path real = resolvedLink(target);
    std::error_code error;
    int number = 1;
    while (number <= kTemporaryNames &&
           exists(std::filesystem::symlink_status(temporaryName(real, number), error))) {
        ++number;
    }
    return number > kTemporaryNames;
}

void removeStaleTemporaries(const std::filesystem::path& target) {
    // Another instance may be saving at this moment, and its temporary file is closed before it is
    // renamed. The age tells them apart, because saving takes milliseconds.
    const auto minuteAgo = std::filesystem::file_time_type::clock::now() - std::chrono::minutes(1);
    const std::filesystem::path real = resolvedLink(target);
    for (int number = 1; number <= kTemporaryNames; ++number) {
        const std::filesystem::path leftover = temporaryName(real, number);
        std::error_code error;
        if (is_regular_file(std::filesystem::symlink_status(leftover, error)) &&
            last_write_time(leftover, error) < minuteAgo && !error) {
            std::filesystem::remove(leftover, error);
        }
    }
}

FileReplacement::FileReplacement(const std::filesystem::path& target)
    : target_(resolvedLink(target)), result_(checkTarget(target_)) {
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
        succeeds([this] { return removeFile(temporary_); });
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

SaveResult FileReplacement::commit() {
    if (finish() == SaveResult::saved) {
        if (renameFile(temporary_, target_)) {
            temporary_.clear();
        } else {
            fail();
        }
    }
    return result_;
}

} // namespace percussomatic
