// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace percussomatic {

// Safe replacement of a file: it is replaced as a whole or stays as it was. The new content is
// written and flushed under another name beside it, which then becomes the file's name.

enum class SaveResult {
    saved,
    noFolder,  // its folder is absent and cannot be created
    readOnly,  // the file has the read-only attribute
    notAFile,  // something other than a file has its name
    notWritten // disk full, folder locked and the like
};

// A file that is about to replace another or to be the first of its name. Until commit() has
// succeeded the old file is untouched. A replacement that is destroyed before that leaves nothing
// behind; only a process that dies in between leaves "NAME.1.saving" (or the next free number up
// to 9). One thread at a time.
class FileReplacement {
public:
    explicit FileReplacement(const std::filesystem::path& target);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    void write(std::string_view bytes);
    SaveResult result() const noexcept { return result_; } // so far; a failure stays

    // Flushes to the disk and closes. commit() does so by itself. Several files that belong
    // together are finished first, so that most failures come before the first commit().
    SaveResult finish();

    // Renames to the target's name.
    SaveResult commit();

private:
    void fail();

    struct CloseFile {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::filesystem::path target_;
    std::filesystem::path temporary_; // empty if there is none
    std::unique_ptr<std::FILE, CloseFile> file_;
    SaveResult result_ = SaveResult::saved;
};

// Removes temporary files that a killed process left for that file more than a minute ago.
void removeStaleTemporaries(const std::filesystem::path& target);

} // namespace percussomatic
