// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <ctime>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace percussomatic {

// Makes the next calls of a function of the C library fail. Pauses take no time.
struct FailingCall {
    std::string name; // "rename", "fsync" or "unlink"
    int error = 0, failures = 0;
    int passes = 0;              // calls that succeed before
    void (*inPause)() = nullptr; // what other programs do meanwhile
    long pausedMs = 0;           // since it was set
    off_t syncedBytes = 0;       // size of the last file that fsync() was called for

    bool failsIn(std::string_view function) {
        if (function != name || passes-- > 0 || failures == 0) {
            return false;
        }
        --failures;
        errno = error;
        return true;
    }
};

inline FailingCall& failingCall() {
    static FailingCall call;
    return call;
}

} // namespace percussomatic

// They take the place of the C library's functions. Include this file once per program.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the library's names are
// reserved
extern "C" {
int rename(const char* from, const char* to) noexcept {
    const bool fails = percussomatic::failingCall().failsIn("rename");
    return fails ? -1 : static_cast<int>(syscall(SYS_rename, from, to));
}
int fsync(int descriptor) {
    const bool fails = percussomatic::failingCall().failsIn("fsync");
    struct stat file {};
    if (fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode)) {
        percussomatic::failingCall().syncedBytes = file.st_size;
    }
    return fails ? -1 : static_cast<int>(syscall(SYS_fsync, descriptor));
}
int unlink(const char* path) noexcept {
    const bool fails = percussomatic::failingCall().failsIn("unlink");
    return fails ? -1 : static_cast<int>(syscall(SYS_unlink, path));
}
int nanosleep(const timespec* pause, timespec* /*rest*/) {
    percussomatic::failingCall().pausedMs += pause->tv_nsec / 1'000'000;
    if (const auto inPause = percussomatic::failingCall().inPause) {
        inPause();
    }
    return 0;
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
