// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// The system's clocks.

// Milliseconds since an arbitrary point; wraps around. GUI thread.
std::uint32_t tickCountMs() noexcept;

// Nanoseconds of a monotonic high-resolution counter. Any thread.
std::int64_t counterNs() noexcept;

} // namespace percussomatic
