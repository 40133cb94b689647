// SPDX-License-Identifier: MIT
#include "commands.h"

#include "files.h"
#include "output_file.h"
#include "playback.h"

namespace percussomatic::tool {

int rewrite(const Arguments& arguments) {
    const auto read = readCard(arguments.operands[0]);
    if (!read) {
        return kFailure;
    }
    return writeOutput(arguments.operands[1], writePunchCard(withSettings(read->card), 0));
}

} // namespace percussomatic::tool
