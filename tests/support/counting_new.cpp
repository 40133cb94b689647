#include "support/counting_new.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocations = 0;

} // namespace

// All forms stand here: a sanitizer's own array forms would not come by. In a file of its own, or
// the compiler sees memory of its new go to free().
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

std::size_t percussomatic::allocationCount() noexcept {
    return allocations;
}
