// SPDX-License-Identifier: MIT
#pragma once

#include "arguments.h"

#include <span>
#include <string>

namespace percussomatic::tool {

// Each command has a source file of its own and returns the exit code. The number of operands and
// the names of the options have been checked; invalid values throw UsageError.
int check(const Arguments& arguments);
int show(const Arguments& arguments);
int rewrite(const Arguments& arguments);
int render(const Arguments& arguments);
int midi(const Arguments& arguments);
int recordings(const Arguments& arguments);

// Runs the tool with the command line in UTF-8, without the program's name. Returns the exit code.
int runTool(std::span<const std::string> words);

// Implemented in main_posix.cpp and main_windows.cpp.
bool stderrIsTerminal() noexcept;

} // namespace percussomatic::tool
