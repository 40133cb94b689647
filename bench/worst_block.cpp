// SPDX-License-Identifier: MIT
// How long can a single block take? Renders 100,000 blocks with the effect on and 64 voices
// that start and end at random. The deadline of a block is 10.67 ms. Wall time includes other
// load on the machine; processor time is that of this thread alone.
//
// usage: worst_block [BLOCKS]

#include "busy_engine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace percussomatic {
namespace {

constexpr double kBlockUs = 1e6 * kDeviceBufferFrames / kDeviceRateHz;

double nowUs(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return 1e6 * static_cast<double>(now.tv_sec) + 1e-3 * static_cast<double>(now.tv_nsec);
}

// Recordings of 0.2 to 5 s; every second one is half silence, so that auto-stop ends its voices.
void loadRecordings(SoundEngine& engine) {
    engine.samples = recordings();
    for (std::size_t i = 0; i < kInstruments; ++i) {
        Sample& sample = engine.samples[i];
        const std::size_t frames = i % 3 == 0 ? kRecordingFrames : 10000 + 9000 * i;
        for (Plane* plane : {&sample.left, &sample.right}) {
            std::vector<float> values = plane->frames();
            values.resize(frames);
            std::fill(values.end() - static_cast<std::ptrdiff_t>(i % 2 * frames / 2), values.end(),
                      0.0f);
            *plane = values;
        }
    }
}

// One trigger per idle voice, and occasionally one more, which steals voice 0.
void triggerAtRandom(SoundEngine& engine, std::mt19937& random) {
    auto triggers = std::count_if(engine.voices.begin(), engine.voices.end(),
                                  [](const Voice& voice) { return !voice.active; });
    triggers += random() % 8 == 0 ? 1 : 0;
    for (; triggers > 0; --triggers) {
        engine.trigger(static_cast<std::int32_t>(random() % kInstruments),
                       static_cast<float>(random() % 100) * 0.002f);
    }
}

void print(const char* clock, std::vector<double>& times) {
    std::sort(times.begin(), times.end());
    std::printf("%-10s", clock);
    for (const double quantile : {0.5, 0.99, 0.999, 1.0}) {
        const auto rank =
            static_cast<std::size_t>(quantile * static_cast<double>(times.size() - 1));
        std::printf("  %8.1f us (1/%.0f)", times[rank], kBlockUs / times[rank]);
    }
    std::printf("\n");
}

void measure(std::size_t blocks) {
    SoundEngine engine;
    loadRecordings(engine);
    engine.prepareForDevice();
    engine.setEffectPreset(5);
    engine.setEffectEnabled(true);
    for (std::uint32_t instrument = 0; instrument < kInstruments; ++instrument) {
        engine.setSend(instrument, 0.5f);
    }
    std::mt19937 random(1);
    std::vector<std::int16_t> out(std::size_t{kDeviceBufferFrames} * 2);
    std::vector<double> wall(blocks);
    std::vector<double> processor(blocks);
    for (std::size_t block = 0; block < blocks; ++block) {
        triggerAtRandom(engine, random);
        const double wallStart = nowUs(CLOCK_MONOTONIC);
        const double processorStart = nowUs(CLOCK_THREAD_CPUTIME_ID);
        engine.renderBlock(out.data(), kDeviceBufferFrames);
        processor[block] = nowUs(CLOCK_THREAD_CPUTIME_ID) - processorStart;
        wall[block] = nowUs(CLOCK_MONOTONIC) - wallStart;
    }
    std::printf("%zu blocks; in brackets: time as a fraction of the %.2f ms deadline\n", blocks,
                kBlockUs / 1000.0);
    std::printf("%-10s  %-19s  %-19s  %-19s  %s\n", "", "median", "p99", "p99.9", "longest");
    print("wall", wall);
    print("processor", processor);
}

} // namespace
} // namespace percussomatic

int main(int argc, char** argv) {
    const long blocks = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 100000;
    percussomatic::measure(static_cast<std::size_t>(std::max(blocks, 1L)));
    return 0;
}
