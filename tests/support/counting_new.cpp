// SPDX-License-Identifier: MIT
#include "support/counting_new.h"

#include <cstdlib>
#include <new>

// Replaces the array forms, too, because a sanitizer's array forms would bypass this. In a separate
// file, because the compiler would otherwise warn that memory from new is passed to free().
void* operator new(std::size_t size) {
    ++percussomatic::allocationCount;
    if (void* memory = std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    ++percussomatic::allocationCount;
    return std::malloc(size != 0 ? size : 1);
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
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
