// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <csignal>

namespace percussomatic::tool {

// During its lifetime, SIGINT and similar signals only make interrupted() true, so that a command
// can remove its temporary files. Ignored signals, as under nohup, stay ignored. Main thread only.
// Exists only while files are written: a command that waits for its input can simply be ended.
class InterruptGuard {
public:
    InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;
    ~InterruptGuard();

private:
#if defined(SIGHUP)
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP, SIGPIPE};
#elif defined(SIGBREAK) // Windows
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGBREAK};
#else
    static constexpr std::array kSignals{SIGINT, SIGTERM};
#endif
    std::array<void (*)(int), kSignals.size()> previous_{};
};

bool interrupted() noexcept;

} // namespace percussomatic::tool
