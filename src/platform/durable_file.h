// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <filesystem>

namespace percussomatic {

// What writing a file safely needs beyond the standard library. One implementation for Windows and
// one for POSIX systems, which the native tests and the companion tool use. Any thread.

// Creates a file for binary writing; null if the name is taken or nothing can be created there.
std::FILE* createNewFile(const std::filesystem::path& path) noexcept;

// Writes everything through to the disk, so that a file that is renamed afterwards is whole even
// after a power cut. False if that failed.
bool flushToDisk(std::FILE* file) noexcept;

} // namespace percussomatic
