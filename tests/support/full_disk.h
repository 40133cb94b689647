// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <cstddef>
#include <sys/resource.h>

namespace percussomatic {

// During its lifetime no file can grow beyond `bytes`, as if the disk were full.
class FullDisk {
public:
    explicit FullDisk(std::size_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &oldLimit_);
        const rlimit limit{bytes, oldLimit_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &oldLimit_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit oldLimit_{};
    void (*handler_)(int);
};

} // namespace percussomatic
