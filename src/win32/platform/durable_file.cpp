// SPDX-License-Identifier: MIT
#include "durable_file.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

namespace percussomatic {

std::FILE* createNewFile(const std::filesystem::path& path) noexcept {
    const int descriptor =
        _wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
    return descriptor < 0 ? nullptr : _wfdopen(descriptor, L"wb");
}

bool flushToDisk(std::FILE* file) noexcept {
    return std::fflush(file) == 0 && _commit(_fileno(file)) == 0;
}

} // namespace percussomatic
