#pragma once

#include <cstddef>

namespace percussomatic {

// How often the calling thread has used operator new. Over-aligned types use another one and are
// not seen.
std::size_t allocationCount() noexcept;

} // namespace percussomatic
