#pragma once

namespace lumivarda::dsp {

struct StereoFrame {
    float left = 0.0f;
    float right = 0.0f;
};

// An effect fed one frame at a time. Not thread-safe by itself: whoever owns an
// effect serialises its calls. Only prepare() may allocate.
class VEffect {
public:
    virtual ~VEffect() = default;

    virtual void prepare(double sampleRateHz) = 0; // sizes and clears all delay memory
    virtual void reset() noexcept = 0;             // clears delay memory, keeps settings
    virtual StereoFrame process(float left, float right) noexcept = 0;
};

} // namespace lumivarda::dsp
