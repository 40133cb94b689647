// SPDX-License-Identifier: MIT
#include "durable_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace percussomatic {

namespace {

bool flushDescriptor(int descriptor) noexcept {
    return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP || errno == ENOSYS;
}

// After a power failure the old file may be back if this fails, but one of the two is whole.
void flushFolderOf(const std::filesystem::path& path) {
    const std::filesystem::path folder = path.parent_path();
    const int descriptor =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        flushDescriptor(descriptor);
        close(descriptor);
    }
}

void copyAccess(const char* from, const char* to) noexcept {
    struct stat old {};
    if (stat(from, &old) == 0) {
        // The owner first, because a change of owner clears bits of the mode.
        [[maybe_unused]] const int ignored = chown(to, old.st_uid, old.st_gid);
        chmod(to, old.st_mode & 07777);
    }
}

FileResult resultOf(int returned) noexcept {
    if (returned == 0) {
        return FileResult::done;
    }
    return errno == EBUSY || errno == ETXTBSY ? FileResult::busy : FileResult::failed;
}

} // namespace

std::FILE* createNewFile(const std::filesystem::path& path) noexcept {
    constexpr mode_t kPermissions = 0666; // reduced by the user's umask
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPermissions);
    return descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
}

bool flushToDisk(std::FILE* file) noexcept {
    return std::fflush(file) == 0 && flushDescriptor(fileno(file));
}

FileResult replaceFile(const std::filesystem::path& from,
                       const std::filesystem::path& to) noexcept {
    copyAccess(to.c_str(), from.c_str());
    const FileResult result = resultOf(std::rename(from.c_str(), to.c_str()));
    if (result == FileResult::done) {
        flushFolderOf(to);
    }
    return result;
}

FileResult removeFile(const std::filesystem::path& path) noexcept {
    const int returned = unlink(path.c_str());
    return returned != 0 && errno == ENOENT ? FileResult::done : resultOf(returned);
}

} // namespace percussomatic
