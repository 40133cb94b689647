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
// power failure. False if that failed.
bool flushToDisk(std::FILE* file) noexcept;

} // namespace percussomatic
