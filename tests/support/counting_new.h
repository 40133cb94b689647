#pragma once

#include <cstddef>

namespace percussomatic {

// Counts what the constructing thread allocates with operator new while it lives.
// Over-aligned types use another operator and are not seen.
class AllocationCount {
public:
    AllocationCount() noexcept;
    ~AllocationCount();
    AllocationCount(const AllocationCount&) = delete;
    AllocationCount& operator=(const AllocationCount&) = delete;

    std::size_t value() const noexcept;

private:
    std::size_t before_;
};

} // namespace percussomatic
