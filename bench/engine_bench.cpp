// What do a block of voices and the reverb cost? Each is timed beside the plain
// reference of the tests, and the last lines give the ratio of the two.

#include "audio/sound_engine.h"
#include "support/plain_engine.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic {
namespace {

constexpr std::string_view kPlainSuffix = ", plain reference";

// Twelve stereo recordings of two seconds at 96 kHz, the rate of the instrument's own:
// together far larger than the caches, as in the instrument.
const std::vector<Sample>& recordings() {
    static const std::vector<Sample> bank = [] {
        std::vector<Sample> samples;
        std::uint32_t noise = 1;
        for (int instrument = 0; instrument < 12; ++instrument) {
            Sample sample{96000, std::vector<float>(192000), std::vector<float>(192000)};
            for (std::size_t i = 0; i < sample.left.size(); ++i) {
                noise = noise * 1664525U + 1013904223U;
                sample.left[i] = static_cast<float>(static_cast<std::int32_t>(noise)) * 0x1p-32f;
                sample.right[i] = -sample.left[i];
            }
            samples.push_back(std::move(sample));
        }
        return samples;
    }();
    return bank;
}

void countRealTime(benchmark::State& state) {
    const double seconds =
        static_cast<double>(state.iterations()) * kDeviceBufferFrames / kDeviceRateHz;
    state.counters["x_realtime"] = benchmark::Counter(seconds, benchmark::Counter::kIsRate);
}

template <typename Engine>
void renderVoices(benchmark::State& state, std::size_t voiceCount, bool effect) {
    const auto engine = std::make_unique<Engine>();
    engine->samples = recordings();
    engine->prepareForDevice();
    engine->setEffectEnabled(effect);
    for (std::size_t voice = 0; voice < voiceCount; ++voice) {
        const auto instrument = static_cast<std::uint32_t>(voice % 12);
        engine->setSend(instrument, 0.5f);
        engine->trigger(static_cast<std::int32_t>(instrument), 0.1f);
        engine->voices[voice].position = 2800.0 * static_cast<double>(voice);
    }
    std::vector<std::int16_t> out(std::size_t{kDeviceBufferFrames} * 2);
    for (auto _ : state) {
        for (std::size_t voice = 0; voice < voiceCount; ++voice) {
            if (engine->voices[voice].position > 190000.0) {
                engine->voices[voice].position = 0.0; // keeps the number of voices steady
            }
        }
        engine->renderBlock(out.data(), kDeviceBufferFrames);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    countRealTime(state);
}

template <typename Reverb>
void reverbAlone(benchmark::State& state) {
    Reverb reverb;
    reverb.prepare(kDeviceRateHz);
    float input = 0.5f;
    for (auto _ : state) {
        for (std::uint32_t frame = 0; frame < kDeviceBufferFrames; ++frame) {
            input = -input;
            benchmark::DoNotOptimize(reverb.process(input, 0.25f));
        }
    }
    countRealTime(state);
}

void registerBenchmarks() {
    using benchmark::RegisterBenchmark;
    const std::string plainSuffix(kPlainSuffix);
    for (const bool effect : {false, true}) {
        for (const std::size_t voices : {0U, 8U, 64U}) {
            const std::string name = "render 512 frames, " + std::to_string(voices) +
                                     " voices, effect " + (effect ? "on" : "off");
            RegisterBenchmark(name.c_str(), renderVoices<SoundEngine>, voices, effect);
            RegisterBenchmark((name + plainSuffix).c_str(), renderVoices<plain::PlainEngine>,
                              voices, effect);
        }
    }
    const std::string name = "reverb alone, 512 frames";
    RegisterBenchmark(name.c_str(), reverbAlone<lumivarda::dsp::Plate70Reverb>);
    RegisterBenchmark((name + plainSuffix).c_str(), reverbAlone<plain::PlainReverb>);
}

// Adds one line per pair at the end: how many times faster than its plain reference it
// is, and than real time. Give --benchmark_repetitions to compare medians, and
// --benchmark_enable_random_interleaving=true on a machine that is busy otherwise.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median") {
                timesRealTime_[run.run_name.function_name] = run.counters.at("x_realtime");
            }
        }
    }

    void Finalize() override {
        for (const auto& [name, times] : timesRealTime_) {
            const auto reference = timesRealTime_.find(name + std::string(kPlainSuffix));
            if (reference != timesRealTime_.end()) {
                std::printf("%6.2f x plain reference, %7.0f x real time: %s\n",
                            times / reference->second, times, name.c_str());
            }
        }
    }

private:
    std::map<std::string, double> timesRealTime_;
};

} // namespace
} // namespace percussomatic

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    percussomatic::registerBenchmarks();
    percussomatic::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
