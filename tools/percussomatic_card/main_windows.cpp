// SPDX-License-Identifier: MIT
#include "cards/card_text.h"
#include "commands.h"

#include <cstdio>
#include <io.h>
#include <string>
#include <vector>
#include <windows.h>

bool percussomatic::tool::stderrIsTerminal() noexcept {
    return _isatty(_fileno(stderr)) != 0;
}

int wmain(int argc, wchar_t** argv) {
    SetConsoleOutputCP(CP_UTF8);
    std::vector<std::string> words;
    for (int at = 1; at < argc; ++at) {
        words.push_back(percussomatic::utf8FromWide(argv[at]));
    }
    return percussomatic::tool::runTool(words);
}
