// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <filesystem>

namespace percussomatic {

// File operations beyond the standard library that are needed to write a file safely. Implemented
// for Windows and for POSIX systems. Any thread.

// Creates a file for binary writing; null if the file exists or cannot be created.
std::FILE* createNewFile(const std::filesystem::path& path) noexcept;

// Flushes the file to the physical disk, so that a file renamed afterwards is complete even after a
// power failure. False if that failed; true if the file system does not support it.
bool flushToDisk(std::FILE* file) noexcept;

enum class FileResult {
    done,
    busy, // another program is using the file; may succeed a moment later
    failed
};

// Renames `from` to `to` in the same folder, replacing a file of that name, and flushes the rename
// to the disk. The new file takes over attributes and access rights of the one it replaces, as far
// as the user may set them.
FileResult replaceFile(const std::filesystem::path& from, const std::filesystem::path& to) noexcept;

// Done if there is no such file.
FileResult removeFile(const std::filesystem::path& path) noexcept;

} // namespace percussomatic
