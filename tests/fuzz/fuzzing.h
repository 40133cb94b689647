#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

// A fuzz target is a file that defines this: whatever the bytes, it returns 0 and nothing goes
// wrong. Linked with libFuzzer by scripts/fuzz and with replay_main.cpp by the tests.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace percussomatic::fuzz {

// Ends the program where something is not as it must be.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "not so: %s\n", what);
        std::abort();
    }
}

// The input from its front; zeros when it has come to its end.
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
