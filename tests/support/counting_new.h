// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace percussomatic {

// Number of calls of operator new by this thread, except for over-aligned types.
inline thread_local std::size_t allocationCount = 0;

} // namespace percussomatic
