#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace percussomatic::reference {

// The plate reverb written for reading, to compare the fast one with bit for bit.
// Lines are addressed by the number of frames processed.
struct ReferenceReverb {
    struct Line {
        std::vector<float> memory;
        float lowPass = 0.0f;
    };
    struct Frame {
        float left;
        float right;
    };

    void prepare(double rateHz);
    void reset();
    Frame process(float left, float right);

    float roomSize = 0.5f;
    float damping = 0.5f;
    float wet = 1.0f;
    float width = 1.0f;
    float preDelayMs = 0.0f;

    double sampleRate = 44100.0;
    std::array<std::array<Line, 8>, 2> combs;
    std::array<std::array<Line, 4>, 2> allpasses;
    std::array<std::vector<float>, 2> preDelay;
    std::size_t frame = 0;
};

} // namespace percussomatic::reference
