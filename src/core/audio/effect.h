// SPDX-License-Identifier: MIT
#pragma once

namespace lumivarda::dsp {

struct StereoFrame {
    float left = 0.0f;
    float right = 0.0f;
};

// A stereo effect that processes one frame at a time. Not thread-safe: the owner serialises all
// calls. Only prepare() may allocate.
class VEffect {
public:
    virtual ~VEffect() = default;

    virtual void prepare(double sampleRateHz) = 0; // sizes and clears all delay lines
    virtual void reset() noexcept = 0;             // clears all delay lines, keeps the settings
    virtual StereoFrame process(float left, float right) noexcept = 0;
};

} // namespace lumivarda::dsp
