#pragma once

#include "cards/punch_card.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace percussomatic {

// Cards on disk. A file is replaced as a whole or stays as it was: the new text is written and
// flushed under another name beside it and then takes its name.

inline constexpr const char* kCardFolder = "PunchCards"; // in the working directory

std::filesystem::path cardFilePath(int slot); // "PunchCards/card_1.vopcard" for slot 0

// Reads a card into the slot and marks it used. False leaves the slot as it was, also when a number
// cannot be converted.
bool loadCardFile(const std::filesystem::path& path, PunchCard& slot);

// The first MiB of a file, which is far more than a card; nothing when it cannot be read.
std::optional<std::string> readCardBytes(const std::filesystem::path& path);

enum class SaveResult {
    saved,
    noFolder,  // its folder is not there and cannot be created
    readOnly,  // the player has marked the file read-only
    notAFile,  // something other than a file has its name
    notWritten // disk full, folder locked and the like
};

// Creates missing folders first.
SaveResult saveCardFile(const std::filesystem::path& path, std::string_view text);

// What happened and what to do, for a message box; names the file. Empty when saved.
std::wstring saveFaultText(SaveResult result, const std::filesystem::path& path);

// A file on its way to replace another, or to be the first of its name. Until take() has succeeded
// the old file is untouched; a replacement that is dropped before leaves nothing behind. Only a
// process that dies in between leaves "NAME.1.saving" (or the next free number up to 9).
class FileReplacement {
public:
    explicit FileReplacement(const std::filesystem::path& target);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    void write(std::string_view bytes);
    SaveResult result() const noexcept { return result_; } // so far; a failure stays

    // All is written: closes it, down to the disk. take() does so by itself; several files that
    // belong together are finished first, so that what can fail has failed before the first take().
    SaveResult finish();

    SaveResult take(); // the target's name

private:
    void fail();

    struct CloseFile {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::filesystem::path target_;
    std::filesystem::path temporary_; // empty when there is none
    std::unique_ptr<std::FILE, CloseFile> file_;
    SaveResult result_ = SaveResult::saved;
};

// Removes what savers of that file have left who died more than a minute ago.
void sweepUnfinished(const std::filesystem::path& target);

// What saving asks of the system, beyond the standard library: one implementation each in
// card_file_posix.cpp and card_file_windows.cpp.

// Creates a file for binary writing; null if the name is taken or nothing can be created there.
std::FILE* createNewFile(const std::filesystem::path& path) noexcept;

// Down to the disk, so that a file that is renamed afterwards is whole whatever happens next.
bool flushToDisk(std::FILE* file) noexcept;

} // namespace percussomatic
