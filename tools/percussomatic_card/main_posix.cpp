// SPDX-License-Identifier: MIT
#include "commands.h"

#include <csignal>
#include <string>
#include <unistd.h>
#include <vector>

bool percussomatic::tool::stderrIsTerminal() noexcept {
    return isatty(STDERR_FILENO) != 0;
}

int main(int argc, char** argv) {
    std::signal(SIGXFSZ,
                SIG_IGN); // exceeding a file size limit becomes a write error, like a full disk
    return percussomatic::tool::runTool(std::vector<std::string>(argv + 1, argv + argc));
}
