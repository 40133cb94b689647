// SPDX-License-Identifier: MIT
// Runs benchmarks in interleaved rounds and prints how they compare.
#pragma once

#include "audio/sound_engine.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace percussomatic {

// Times render(), which renders one block, and reports the speed as a multiple of real time.
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

// Prints the table, then one line per benchmark named "X, against Y": how many times faster
// X is. Compares the medians of interleaved rounds, so that other load on the machine affects
// all benchmarks equally.
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
            const auto baseline = timesRealTime_.find(name.substr(0, name.find(", against ")));
            if (baseline != timesRealTime_.end() && baseline->first != name) {
                std::printf("%7.2f x faster, %7.0f x real time: %s\n", baseline->second / times,
                            baseline->second, name.c_str());
            }
        }
    }

private:
    std::map<std::string, double> timesRealTime_;
};

// Runs nine interleaved rounds unless the command line sets other options.
inline int runRounds(int argc, char** argv) {
    std::vector<std::string> options{
        argv[0], "--benchmark_repetitions=9", "--benchmark_enable_random_interleaving=true",
        "--benchmark_report_aggregates_only=true", "--benchmark_min_time=0.05"};
    options.insert(options.end(), argv + 1, argv + argc);
    std::vector<char*> arguments;
    arguments.reserve(options.size());
    for (std::string& option : options) {
        arguments.push_back(option.data());
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
