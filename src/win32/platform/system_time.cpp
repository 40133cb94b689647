// SPDX-License-Identifier: MIT
#include "system_time.h"

#include <windows.h>

namespace percussomatic {

std::uint32_t tickCountMs() noexcept {
    return GetTickCount();
}

std::int64_t counterNs() noexcept {
    constexpr std::int64_t kNsPerSecond = 1'000'000'000;
    static const std::int64_t frequency = [] {
        LARGE_INTEGER value{};
        QueryPerformanceFrequency(&value);
        return value.QuadPart;
    }();
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    // Converts whole seconds separately: counter * 1e9 would overflow after some minutes.
    return counter.QuadPart / frequency * kNsPerSecond +
           counter.QuadPart % frequency * kNsPerSecond / frequency;
}

} // namespace percussomatic
