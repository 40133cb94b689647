// SPDX-License-Identifier: MIT
#include "commands.h"

#include "assets/assets.h"
#include "files.h"
#include "playback.h"

#include <memory>

namespace percussomatic::tool {

int recordings(const Arguments& arguments) {
    const std::string& folder = arguments.operands[0];
    std::error_code error;
    std::filesystem::create_directories(pathFromUtf8(folder), error);
    if (!std::filesystem::is_directory(pathFromUtf8(folder), error)) {
        return exitCode(SaveResult::noFolder, folder);
    }
    // All files are written before the first is renamed, so a full disk leaves the folder
    // unchanged.
    std::vector<std::unique_ptr<FileReplacement>> outputs;
    const auto fileOf = [&](std::size_t at) {
        return folder + '/' + std::string(kInstruments[at].recording);
    };
    for (std::size_t at = 0; at < kInstruments.size(); ++at) {
        const AssetBytes asset = findAsset(kInstruments[at].recording);
        auto& output =
            *outputs.emplace_back(std::make_unique<FileReplacement>(pathFromUtf8(fileOf(at))));
        output.write({reinterpret_cast<const char*>(asset.bytes), asset.size});
        if (output.finish() != SaveResult::saved) {
            return exitCode(output.result(), fileOf(at));
        }
    }
    for (std::size_t at = 0; at < outputs.size(); ++at) {
        if (outputs[at]->commit() != SaveResult::saved) {
            return exitCode(outputs[at]->result(), fileOf(at));
        }
    }
    return kSuccess;
}

} // namespace percussomatic::tool
