#include "support/counting_new.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool armed = false;
thread_local std::size_t allocations = 0;

} // namespace

void* operator new(std::size_t size) {
    if (armed) {
        ++allocations;
    }
    if (void* memory = std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

// All forms stand here: a sanitizer's own array forms would not come by.
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

namespace percussomatic {

AllocationCount::AllocationCount() noexcept : before_(allocations) {
    armed = true;
}

AllocationCount::~AllocationCount() {
    armed = false;
}

std::size_t AllocationCount::value() const noexcept {
    return allocations - before_;
}

} // namespace percussomatic
