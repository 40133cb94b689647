// SPDX-License-Identifier: MIT
// Fixture of the benchmarks: an engine that plays a constant number of voices.
#pragma once

#include "audio/sound_engine.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace percussomatic {

constexpr std::size_t kInstruments = 12;
constexpr std::uint32_t kRecordingFrames = 480000; // 5 s at 96 kHz

// Twelve stereo recordings of noise at 96 kHz, like the instrument's own. At 46 MB they are
// larger than the caches, as in the instrument.
inline const std::vector<Sample>& recordings() {
    static const std::vector<Sample> bank = [] {
        std::vector<Sample> samples;
        std::uint32_t noise = 1;
        const auto next = [&noise] {
            noise = noise * 1664525U + 1013904223U;
            return static_cast<float>(static_cast<std::int32_t>(noise)) * 0x1p-32f;
        };
        for (std::size_t instrument = 0; instrument < kInstruments; ++instrument) {
            Sample sample{2 * kDeviceRateHz, Plane(kRecordingFrames), Plane(kRecordingFrames),
                          true};
            for (std::size_t i = 0; i < kRecordingFrames; ++i) {
                sample.left[i] = next();
                sample.right[i] = next();
            }
            samples.push_back(std::move(sample));
        }
        return samples;
    }();
    return bank;
}

constexpr std::uint32_t kRecordingFramesPerBlock = 2 * kDeviceBufferFrames;

// A random position at least one block before the end. It is even, because a voice starts at
// frame 0 and advances by two recording frames per output frame.
inline std::uint32_t randomFrame(std::mt19937& random) {
    return static_cast<std::uint32_t>(random() %
                                      ((kRecordingFrames - kRecordingFramesPerBlock) / 2)) *
           2;
}

// A SoundEngine or the reference engine, with a constant number of voices spread over the
// recordings.
template <typename Engine>
class BusyEngine {
public:
    BusyEngine() {
        engine_.samples = recordings();
        engine_.prepareForDevice();
    }

    void play(std::size_t voices, bool effect) {
        voices_ = voices;
        engine_.stopAllVoicesRequest = true;
        render();
        engine_.setEffectEnabled(effect);
        for (std::uint32_t instrument = 0; instrument < kInstruments; ++instrument) {
            engine_.setSend(instrument, 0.5f);
        }
        for (std::size_t voice = 0; voice < voices; ++voice) {
            engine_.trigger(static_cast<std::int32_t>(voice % kInstruments), 0.1f);
            engine_.voices[voice].position = randomFrame(random_);
        }
    }

    const std::int16_t* render() {
        for (std::size_t voice = 0; voice < voices_; ++voice) {
            double& position = engine_.voices[voice].position;
            if (position + kRecordingFramesPerBlock >= kRecordingFrames) {
                position = randomFrame(random_); // before the voice ends
            }
        }
        engine_.renderBlock(out_.data(), kDeviceBufferFrames);
        return out_.data();
    }

private:
    Engine engine_;
    std::size_t voices_ = 0;
    std::mt19937 random_{1};
    std::vector<std::int16_t> out_ =
        std::vector<std::int16_t>(std::size_t{kDeviceBufferFrames} * 2);
};

} // namespace percussomatic
