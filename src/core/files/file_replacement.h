// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace percussomatic {

// Atomic replacement of a file: after a failure or a power cut it has either its old or its new
// content. The new content is written to a temporary file in the same folder and flushed; then the
// temporary file is renamed. Virus scanners and indexers often open a new file for a moment, so
// renaming and deleting are retried for about a second.

enum class SaveResult {
    saved,
    noFolder,  // the folder does not exist and cannot be created
    readOnly,  // the file has the read-only attribute
    notAFile,  // the name belongs to a folder or a device
    notWritten // any other failure: disk full, no permission
};

// The new content of a file that may or may not exist yet. Until commit() succeeds, an existing
// file is untouched; the destructor then removes the temporary file. A process that is killed
// leaves its temporary file behind: "NAME.1.saving", or the next free number up to 9. Not
// thread-safe.
class FileReplacement {
public:
    explicit FileReplacement(const std::filesystem::path& target);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    void write(std::string_view bytes);
    SaveResult result() const noexcept { return result_; } // `saved` unless something failed

    // Flushes the temporary file to the disk and closes it. commit() calls this itself. To replace
    // several files that belong together, finish all of them before the first commit(), so that
    // most failures occur while all old files are still there.
    SaveResult finish();

    // Renames the temporary file to the target's name, with the access rights of the old file.
    SaveResult commit();

private:
    void fail();

    struct CloseFile {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::filesystem::path target_;
    std::filesystem::path temporary_; // empty if no temporary file exists
    std::unique_ptr<std::FILE, CloseFile> file_;
    SaveResult result_ = SaveResult::saved;
};

// Renames a file in its folder, replacing any file with the new name. False on failure.
bool renameFile(const std::filesystem::path& from, const std::filesystem::path& to);

// Whether all names for temporary files for `target` are taken.
bool temporaryNamesTaken(const std::filesystem::path& target);

// Removes temporary files for `target` that a killed process left more than a minute ago.
void removeStaleTemporaries(const std::filesystem::path& target);

} // namespace percussomatic
