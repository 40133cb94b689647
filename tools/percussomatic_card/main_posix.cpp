// SPDX-License-Identifier: MIT
#include "commands.h"

#include <csignal>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// If the caller has closed a standard stream, the next file opened would take its descriptor, and
// messages would end up inside an output file. Opened in the wrong direction, the stream still
// reports an error to whoever uses it.
bool reserveStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const int flags = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", flags) != stream) {
            return false;
        }
    }
    return true;
}

} // namespace

bool percussomatic::tool::stderrIsTerminal() noexcept {
    return isatty(STDERR_FILENO) != 0;
}

int main(int argc, char** argv) {
    if (!reserveStandardStreams()) {
        return percussomatic::tool::kFailure;
    }
    std::signal(SIGXFSZ,
                SIG_IGN); // exceeding a file size limit becomes a write error, like a full disk
    return percussomatic::tool::runTool(std::vector<std::string>(argv + 1, argv + argc));
}
