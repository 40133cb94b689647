#pragma once

#include <filesystem>

namespace percussomatic {

// Where the settings are kept, beside the program; the file itself comes with the first setting.
const std::filesystem::path& settingsFile();

} // namespace percussomatic
