// SPDX-License-Identifier: MIT
#include "commands.h"

#include <algorithm>
#include <array>
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
    constexpr std::array kStreams{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return std::ranges::all_of(kStreams, [](int stream) {
        const int flags = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        return fcntl(stream, F_GETFD) >= 0 || open("/dev/null", flags) == stream;
    });
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
