#pragma once

#include "audio/sound_engine.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace percussomatic {

// Renders blocks for as long as the benchmark wants and counts seconds of sound.
template <typename Render>
void timeBlocks(benchmark::State& state, Render render) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(render());
        benchmark::ClobberMemory();
    }
    const double seconds =
        static_cast<double>(state.iterations()) * kDeviceBufferFrames / kDeviceRateHz;
    state.counters["x_realtime"] = benchmark::Counter(seconds, benchmark::Counter::kIsRate);
}

// Prints the table, then one line per benchmark whose name is that of another with
// something after a comma: how many times faster the shorter name is. Medians of
// interleaved rounds, so that a machine that is busy otherwise slows all of them alike.
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
            const auto ours = timesRealTime_.find(name.substr(0, name.find(", against ")));
            if (ours != timesRealTime_.end() && ours->first != name) {
                std::printf("%7.2f x faster, %7.0f x real time: %s\n", ours->second / times,
                            ours->second, name.c_str());
            }
        }
    }

private:
    std::map<std::string, double> timesRealTime_;
};

// Nine interleaved rounds unless the command line says otherwise.
inline int runRounds(int argc, char** argv) {
    std::vector<std::string> words{
        argv[0], "--benchmark_repetitions=9", "--benchmark_enable_random_interleaving=true",
        "--benchmark_report_aggregates_only=true", "--benchmark_min_time=0.05"};
    words.insert(words.end(), argv + 1, argv + argc);
    std::vector<char*> arguments;
    arguments.reserve(words.size());
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    auto count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

} // namespace percussomatic
