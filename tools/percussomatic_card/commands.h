#pragma once

#include "arguments.h"

#include <span>
#include <string>

namespace percussomatic::tool {

// One file per command. Each gets arguments whose number and option names are right, and gives the
// exit code; what is wrong with them otherwise it throws as Misuse.
int check(const Arguments& arguments);
int show(const Arguments& arguments);
int rewrite(const Arguments& arguments);
int render(const Arguments& arguments);
int midi(const Arguments& arguments);
int recordings(const Arguments& arguments);

// The whole tool: command line without the program's name, in UTF-8; the exit code.
int runTool(std::span<const std::string> words);

// Whether somebody watches stderr. One implementation per system.
bool errorsGoToTerminal() noexcept;

} // namespace percussomatic::tool
