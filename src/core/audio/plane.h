// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace percussomatic {

// One channel of a recording, its even and its odd frames in arrays of their own. A recording at
// twice the device's rate is played by every second frame, which then lie in a row, so that only
// half as much memory is read.
class Plane {
public:
    Plane() = default;
    explicit Plane(std::size_t frames)
        : halves_{std::vector<float>((frames + 1) / 2), std::vector<float>(frames / 2)} {}
    Plane(const std::vector<float>& frames) : Plane(frames.size()) { // NOLINT: a conversion
        for (std::size_t frame = 0; frame < frames.size(); ++frame) {
            (*this)[frame] = frames[frame];
        }
    }
    bool operator==(const Plane&) const = default;

    std::size_t size() const noexcept { return halves_[0].size() + halves_[1].size(); }
    float operator[](std::size_t frame) const noexcept { return halves_[frame % 2][frame / 2]; }
    float& operator[](std::size_t frame) noexcept { return halves_[frame % 2][frame / 2]; }

    std::vector<float> frames() const {
        std::vector<float> all(size());
        for (std::size_t frame = 0; frame < all.size(); ++frame) {
            all[frame] = (*this)[frame];
        }
        return all;
    }

    // The frame and every second one after it. One past the last one is a valid argument.
    const float* everySecondFrom(std::size_t frame) const noexcept {
        return halves_[frame % 2].data() + frame / 2;
    }

private:
    std::array<std::vector<float>, 2> halves_; // even and odd frames
};

} // namespace percussomatic
