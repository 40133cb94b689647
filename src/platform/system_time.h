// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// The system's clocks.

// Milliseconds since some fixed point; wraps. GUI thread.
std::uint32_t tickCountMs() noexcept;

// Nanoseconds of a monotonic high-resolution counter. Any thread.
std::int64_t counterNs() noexcept;

} // namespace percussomatic
