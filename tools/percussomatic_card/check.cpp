#include "commands.h"

#include "cards/card_text.h"
#include "files.h"

#include <iostream>

namespace percussomatic::tool {

int check(const Arguments& arguments) {
    int code = kDone;
    for (const std::string& file : arguments.operands) {
        const auto read = readCard(file);
        if (!read) {
            code = kFailed;
            continue;
        }
        for (const CardRemark& warning : read->report.warnings) {
            tellRemark(file, warning, "warning: ");
        }
        std::cout << file << ": ok, version " << read->report.version << ", \""
                  << printableUtf8(read->card.title) << "\"" << std::endl;
    }
    return code;
}

} // namespace percussomatic::tool
