#include "commands.h"

#include <csignal>
#include <string>
#include <unistd.h>
#include <vector>

bool percussomatic::tool::errorsGoToTerminal() noexcept {
    return isatty(STDERR_FILENO) != 0;
}

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error like a full disk
    return percussomatic::tool::runTool(std::vector<std::string>(argv + 1, argv + argc));
}
