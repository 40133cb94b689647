#include "commands.h"

#include "assets/assets.h"
#include "files.h"
#include "playing.h"

#include <memory>

namespace percussomatic::tool {

int recordings(const Arguments& arguments) {
    const std::string& folder = arguments.operands[0];
    std::error_code error;
    std::filesystem::create_directories(pathOf(folder), error);
    if (!std::filesystem::is_directory(pathOf(folder), error)) {
        return outcome(SaveResult::noFolder, folder);
    }
    // All are written before the first takes its name: a full disk changes nothing.
    std::vector<std::unique_ptr<FileReplacement>> outputs;
    const auto fileOf = [&](std::size_t at) {
        return folder + '/' + std::string(kInstruments[at].recording);
    };
    for (std::size_t at = 0; at < kInstruments.size(); ++at) {
        const AssetBytes asset = findAsset(kInstruments[at].recording);
        auto& output = *outputs.emplace_back(std::make_unique<FileReplacement>(pathOf(fileOf(at))));
        output.write({reinterpret_cast<const char*>(asset.bytes), asset.size});
        if (output.finish() != SaveResult::saved) {
            return outcome(output.result(), fileOf(at));
        }
    }
    for (std::size_t at = 0; at < outputs.size(); ++at) {
        if (outputs[at]->commit() != SaveResult::saved) {
            return outcome(outputs[at]->result(), fileOf(at));
        }
    }
    return kDone;
}

} // namespace percussomatic::tool
