// SPDX-License-Identifier: MIT
// Input: a WAVE file, which is loaded and played at whatever rate it claims.
#include "audio/sound_engine.h"
#include "fuzz/fuzzing.h"
#include "support/reference_engine.h"

#include <algorithm>
#include <cmath>
#include <vector>

using namespace percussomatic;
using fuzz::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    SoundEngine engine;
    if (engine.loadSample(data, size) < 0) {
        return 0;
    }
    const Sample& sample = engine.samples.front();
    require(sample.sampleRate != 0 && sample.finite, "a recording has a rate and is finite");
    require(sample.left.size() > 0 && sample.left.size() == sample.right.size() &&
                sample.left.size() <= size,
            "both channels have the frames of the file");
    for (const Plane* channel : {&sample.left, &sample.right}) {
        require(std::ranges::all_of(channel->frames(),
                                    [](float value) { return std::abs(value) <= 1.0f; }),
                "all samples are within -1 and 1");
    }

    reference::ReferenceEngine referenceEngine;
    referenceEngine.samples = engine.samples;
    engine.trigger(0, 0.7f);
    referenceEngine.trigger(0, 0.7f);
    constexpr std::uint32_t kFrames = 530; // more than one chunk of the mixer
    std::vector<std::int16_t> out(2 * kFrames), expected(2 * kFrames);
    engine.renderBlock(out.data(), kFrames);
    referenceEngine.renderBlock(expected.data(), kFrames);
    require(out == expected, "the engine renders what the reference engine does");
    return 0;
}
