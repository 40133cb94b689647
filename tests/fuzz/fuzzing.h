// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

// Every fuzz target defines this function and returns 0. scripts/fuzz links it with libFuzzer, the
// tests with replay_main.cpp.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace percussomatic::fuzz {

// Aborts with a message if the condition is false.
inline void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}

// Takes values from the front of the input; zeros once it is empty.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    bool empty() const { return rest_.empty(); }
    std::uint8_t byte() {
        if (rest_.empty()) {
            return 0;
        }
        const std::uint8_t first = rest_.front();
        rest_ = rest_.subspan(1);
        return first;
    }
    int below(int limit) { return byte() % limit; }
    bool flag() { return byte() % 2 != 0; }
    int word() { // signed, 16 bits
        const unsigned high = byte();
        return static_cast<std::int16_t>(high << 8 | byte());
    }
    std::span<const std::byte> rest() const { return std::as_bytes(rest_); }

private:
    std::span<const std::uint8_t> rest_;
};

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace percussomatic::fuzz
