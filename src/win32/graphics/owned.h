// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <utility>

#ifdef PERCUSSOMATIC_COUNT_OWNED
#include <atomic>
#endif

namespace percussomatic {

#ifdef PERCUSSOMATIC_COUNT_OWNED
// Test builds count live objects, because Wine does not report how many are in use.
inline std::atomic<int> ownedObjects = 0;
inline void countOwned(int change) noexcept {
    ownedObjects += change;
}
#else
inline void countOwned(int) noexcept {}
#endif

// Owning handle of a system object such as a font, a brush, an icon or a GDI+ object. Movable.
template <typename Handle, auto release>
class Owned {
public:
    using pointer = Handle;

    Owned() = default;
    explicit Owned(Handle handle) noexcept : handle_(handle) {
        countOwned(handle_ != nullptr ? 1 : 0);
    }
    Owned(Owned&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Owned& operator=(Owned&& other) noexcept {
        Owned old(std::move(*this));
        handle_ = std::exchange(other.handle_, nullptr);
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() {
        if (handle_ != nullptr) {
            release(handle_);
            countOwned(-1);
        }
    }

    Handle get() const noexcept { return handle_; }
    bool operator==(std::nullptr_t) const noexcept { return handle_ == nullptr; }

private:
    Handle handle_ = nullptr;
};

} // namespace percussomatic
