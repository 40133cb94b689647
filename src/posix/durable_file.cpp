// SPDX-License-Identifier: MIT
#include "durable_file.h"

#include <fcntl.h>
#include <unistd.h>

namespace percussomatic {

std::FILE* createNewFile(const std::filesystem::path& path) noexcept {
    constexpr mode_t kPermissions = 0666; // reduced by the user's umask
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPermissions);
    return descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
}

bool flushToDisk(std::FILE* file) noexcept {
    return std::fflush(file) == 0 && fsync(fileno(file)) == 0;
}

} // namespace percussomatic
