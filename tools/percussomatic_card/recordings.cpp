// SPDX-License-Identifier: MIT
#include "commands.h"

#include "assets/assets.h"
#include "files.h"
#include "interrupt.h"
#include "output_file.h"
#include "pattern/instruments.h"

#include <memory>
#include <vector>

namespace percussomatic::tool {

int recordings(const Arguments& arguments) {
    const std::string& folder = arguments.operands[0];
    std::error_code error;
    std::filesystem::create_directories(pathFromUtf8(folder), error);
    if (!std::filesystem::is_directory(pathFromUtf8(folder), error)) {
        reportError(folder, "the folder cannot be created; expected a writable location");
        return kFailure;
    }
    // All files are written before the first is renamed, so a full disk or an interrupt leaves
    // the folder unchanged.
    const InterruptGuard interruptGuard;
    std::vector<std::unique_ptr<OutputFile>> outputs;
    for (const Instrument& instrument : kInstruments) {
        const AssetBytes asset = findAsset(instrument.recording);
        auto& output = *outputs.emplace_back(
            std::make_unique<OutputFile>(folder + '/' + std::string(instrument.recording)));
        output.write({reinterpret_cast<const char*>(asset.bytes), asset.size});
        if (const int code = output.finish(); code != kSuccess) {
            return code;
        }
    }
    for (const auto& output : outputs) {
        if (const int code = output->commit(); code != kSuccess) {
            return code;
        }
    }
    return kSuccess;
}

} // namespace percussomatic::tool
