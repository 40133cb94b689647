// SPDX-License-Identifier: MIT
// What do a block of voices and the reverb cost? Compares each with the tests' reference
// engine, which renders frame by frame and is compiled with the same flags.

#include "busy_engine.h"
#include "rounds.h"
#include "support/reference_engine.h"

#include <string>

namespace percussomatic {
namespace {

constexpr std::size_t kVoiceCounts[] = {0, 1, 2, 4, 8, 16, 32, 48, 64};

template <typename Engine>
void renderVoices(benchmark::State& state, std::size_t voices, bool effect) {
    static BusyEngine<Engine> busy;
    busy.play(voices, effect);
    timeBlocks(state, [] { return busy.render(); });
}

void processBlock(lumivarda::dsp::Plate70Reverb& reverb, float* left, float* right) {
    reverb.processBlock(left, right, left, right, kDeviceBufferFrames);
}

void processBlock(reference::ReferenceReverb& reverb, float* left, float* right) {
    for (std::size_t frame = 0; frame < kDeviceBufferFrames; ++frame) {
        const auto wet = reverb.process(left[frame], right[frame]);
        left[frame] = wet.left;
        right[frame] = wet.right;
    }
}

template <typename Reverb>
void reverbAlone(benchmark::State& state, bool silent) {
    Reverb reverb;
    reverb.prepare(kDeviceRateHz);
    const float level = silent ? 0.0f : 1.0f;
    std::vector<float> left(kDeviceBufferFrames);
    std::vector<float> right(kDeviceBufferFrames);
    timeBlocks(state, [&] {
        for (std::size_t frame = 0; frame < kDeviceBufferFrames; ++frame) {
            left[frame] = level * recordings()[0].left[frame];
            right[frame] = level * recordings()[0].right[frame];
        }
        processBlock(reverb, left.data(), right.data());
        return left.data();
    });
}

// A block in which all voices start, each at a frame of its own or all at the first one.
void startAllVoices(benchmark::State& state, bool spread) {
    SoundEngine engine;
    engine.samples = recordings();
    std::vector<std::int16_t> out(std::size_t{2} * kDeviceBufferFrames);
    constexpr std::int64_t kNsPerVoice = 1'000'000'000 / kDeviceRateHz * kDeviceBufferFrames /
                                         static_cast<std::int64_t>(kVoiceCount);
    timeBlocks(state, [&] {
        engine.voices.fill({});
        engine.nextBlock = StreamPosition{};
        for (std::size_t voice = 0; voice < kVoiceCount; ++voice) {
            engine.triggerAt(static_cast<std::int32_t>(voice % kInstruments), 0.1f,
                             spread ? static_cast<std::int64_t>(voice) * kNsPerVoice : 0);
        }
        engine.renderTimedBlock(out.data(), kDeviceBufferFrames, {});
        return out.data();
    });
}

void registerBenchmarks() {
    using benchmark::RegisterBenchmark;
    const std::string againstReference =
        ", against reference"; // read by scripts/plot_performance.py
    for (const bool effect : {false, true}) {
        for (const std::size_t voices : kVoiceCounts) {
            const std::string name =
                std::to_string(voices) + " voices, effect " + (effect ? "on" : "off");
            RegisterBenchmark(name.c_str(), renderVoices<SoundEngine>, voices, effect);
            RegisterBenchmark((name + againstReference).c_str(),
                              renderVoices<reference::ReferenceEngine>, voices, effect);
        }
    }
    const std::string starts = "64 voices started at 64 frames";
    RegisterBenchmark(starts.c_str(), startAllVoices, true);
    RegisterBenchmark((starts + ", against one frame").c_str(), startAllVoices, false);
    for (const bool silent : {false, true}) {
        const std::string name = std::string("reverb alone, ") + (silent ? "silence" : "signal");
        RegisterBenchmark(name.c_str(), reverbAlone<lumivarda::dsp::Plate70Reverb>, silent);
        RegisterBenchmark((name + againstReference).c_str(),
                          reverbAlone<reference::ReferenceReverb>, silent);
    }
}

} // namespace
} // namespace percussomatic

int main(int argc, char** argv) {
    percussomatic::registerBenchmarks();
    return percussomatic::runRounds(argc, argv);
}
