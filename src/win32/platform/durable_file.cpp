// SPDX-License-Identifier: MIT
#include "durable_file.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace percussomatic {

namespace {

// Only meaningful directly after a call that has failed.
FileResult failure() noexcept {
    switch (GetLastError()) {
    case ERROR_ACCESS_DENIED: // also: deleted, but still open in another program
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
        return FileResult::busy;
    default:
        return FileResult::failed;
    }
}

void copyAccessRights(const wchar_t* from, const wchar_t* to) noexcept {
    constexpr DWORD kMaxBytes = 0x10000; // of an access control list
    std::array<std::byte, kMaxBytes> descriptor;
    DWORD needed = 0;
    if (GetFileSecurityW(from, DACL_SECURITY_INFORMATION, descriptor.data(), kMaxBytes, &needed) !=
        0) {
        SetFileSecurityW(to, DACL_SECURITY_INFORMATION, descriptor.data());
    }
}

// Only what a user can set. The others describe how the old content is stored.
void copyAttributes(const wchar_t* from, const wchar_t* to) noexcept {
    constexpr DWORD kSettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                                FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    if (const DWORD attributes = GetFileAttributesW(from); attributes != INVALID_FILE_ATTRIBUTES) {
        const DWORD settable = attributes & kSettable;
        SetFileAttributesW(to, settable != 0 ? settable : FILE_ATTRIBUTE_NORMAL);
    }
}

} // namespace

std::FILE* createNewFile(const std::filesystem::path& path) noexcept {
    const int descriptor =
        _wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
    return descriptor < 0 ? nullptr : _wfdopen(descriptor, L"wb");
}

bool flushToDisk(std::FILE* file) noexcept {
    if (std::fflush(file) != 0) {
        return false;
    }
    auto* const handle = std::bit_cast<HANDLE>(_get_osfhandle(_fileno(file)));
    if (FlushFileBuffers(handle) != 0) {
        return true;
    }
    const DWORD error = GetLastError();
    return error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
}

FileResult replaceFile(const std::filesystem::path& from,
                       const std::filesystem::path& to) noexcept {
    copyAccessRights(to.c_str(), from.c_str());
    copyAttributes(to.c_str(), from.c_str());
    return MoveFileExW(from.c_str(), to.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0
               ? FileResult::done
               : failure();
}

FileResult removeFile(const std::filesystem::path& path) noexcept {
    if (DeleteFileW(path.c_str()) != 0) {
        return FileResult::done;
    }
    return GetLastError() == ERROR_FILE_NOT_FOUND ? FileResult::done : failure();
}

} // namespace percussomatic
