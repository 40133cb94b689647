// SPDX-License-Identifier: MIT
#include "commands.h"

#include "cards/card_text.h"
#include "files.h"

#include <iostream>

namespace percussomatic::tool {

int check(const Arguments& arguments) {
    int code = kSuccess;
    for (const std::string& file : arguments.operands) {
        const auto read = readCard(file);
        if (!read) {
            code = kFailure;
            continue;
        }
        for (const CardMessage& warning : read->report.warnings) {
            reportRemark(file, warning, "warning: ");
        }
        std::cout << printable(file) << ": ok, version " << read->report.version << ", \""
                  << printableUtf8(read->card.title) << "\"" << std::endl;
    }
    return code;
}

} // namespace percussomatic::tool
