#pragma once

#include <csignal>
#include <cstddef>
#include <sys/resource.h>

namespace percussomatic {

// While one lives, nothing can be written beyond so many bytes of a file, as on a disk that has
// filled up.
class FullDisk {
public:
    explicit FullDisk(std::size_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit{bytes, former_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit former_{};
    void (*handler_)(int);
};

} // namespace percussomatic
