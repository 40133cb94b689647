#include "listen_replay.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>

namespace listen {

namespace {

using percussomatic::SoundEngine;
using Voices = decltype(SoundEngine::voices);

constexpr float kSliderTravel = 650.0f;
constexpr std::size_t kMostPaths = 16;

// One reading of the recording so far.
struct Path {
    Voices voices;
    std::size_t step = 0;    // of the next trigger
    std::size_t trigger = 0; // in that step
    std::vector<Hit> hits;
};

const Step& stepOf(const Scenario& scenario, std::size_t step) {
    return scenario.cycle[step % scenario.cycle.size()];
}

void skipSilentSteps(const Scenario& scenario, Path& path) {
    while (path.trigger == stepOf(scenario, path.step).size()) {
        ++path.step;
        path.trigger = 0;
    }
}

void triggerNext(SoundEngine& engine, const Scenario& scenario, Path& path, std::size_t block) {
    skipSilentSteps(scenario, path);
    const Trigger& next = stepOf(scenario, path.step)[path.trigger];
    engine.trigger(next.sampleIndex, next.gain);
    if (path.trigger == 0) {
        path.hits.push_back({path.step, block, block});
    }
    path.hits.back().lastBlock = block;
    ++path.trigger;
}

// The rest of the step that is under way, and all of the next one should both come late.
std::size_t mostTriggersAtOnce(const Scenario& scenario, Path path) {
    skipSilentSteps(scenario, path);
    std::size_t triggers = stepOf(scenario, path.step).size() - path.trigger;
    path.trigger = stepOf(scenario, path.step).size();
    skipSilentSteps(scenario, path);
    return triggers + stepOf(scenario, path.step).size();
}

// Renders one block on every path, with no trigger before it, with one, with two ..., and keeps
// what equals the recording. Once a count fits, more triggers are considered only while they fit as
// well, being inaudible at first.
std::vector<Path> goOn(SoundEngine& engine, const Scenario& scenario,
                       const std::vector<Path>& paths, const Block& heard, std::size_t block,
                       std::size_t& equalFrames) {
    std::vector<Path> fitting;
    std::vector<std::int16_t> rendered(heard.samples.size());
    equalFrames = 0;
    for (const Path& path : paths) {
        const std::size_t most = mostTriggersAtOnce(scenario, path);
        bool fits = false;
        for (std::size_t count = 0; count <= most; ++count) {
            Path next = path;
            engine.voices = path.voices;
            for (std::size_t i = 0; i < count; ++i) {
                triggerNext(engine, scenario, next, block);
            }
            engine.renderBlock(rendered.data(), heard.head.frames);
            const auto end = std::mismatch(rendered.begin(), rendered.end(), heard.samples.begin());
            const auto equal = static_cast<std::size_t>(end.first - rendered.begin()) / 2;
            equalFrames = std::max(equalFrames, equal);
            if (end.first == rendered.end() && fitting.size() < kMostPaths) {
                next.voices = engine.voices;
                fitting.push_back(std::move(next));
                fits = true;
            } else if (fits) {
                break;
            }
        }
    }
    return fitting;
}

bool isSilent(const Block& block) {
    return std::all_of(block.samples.begin(), block.samples.end(),
                       [](std::int16_t sample) { return sample == 0; });
}

std::optional<Step> readStep(std::istream& words) {
    Step step;
    std::string word;
    while (words >> word) {
        std::istringstream pair(word);
        Trigger trigger;
        char colon = '\0';
        int slider = 0;
        if (!(pair >> trigger.sampleIndex >> colon >> slider) || colon != ':') {
            return std::nullopt;
        }
        trigger.gain = static_cast<float>(slider) / kSliderTravel;
        if (slider > 0) { // the sequencer leaves out lines that are turned down
            step.push_back(trigger);
        }
    }
    return step;
}

} // namespace

std::optional<Scenario> readScenario(std::istream& text) {
    Scenario scenario;
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string word;
        if (!(words >> word)) {
            continue;
        }
        if (word == "step") {
            std::optional<Step> step = readStep(words);
            if (!step) {
                return std::nullopt;
            }
            scenario.cycle.push_back(std::move(*step));
        } else if (word != "master" || !(words >> scenario.master)) {
            return std::nullopt;
        }
    }
    if (std::all_of(scenario.cycle.begin(), scenario.cycle.end(),
                    [](const Step& step) { return step.empty(); })) {
        return std::nullopt;
    }
    return scenario;
}

Replay replay(SoundEngine& engine, const std::vector<Block>& recording, const Scenario& scenario) {
    engine.setMasterVolume(static_cast<float>(scenario.master * scenario.master));
    std::vector<Path> paths(1);
    Replay result;
    for (std::size_t block = 0; block < recording.size(); ++block) {
        if (recording[block].samples.empty()) { // opened: closing it before ended all voices
            for (Path& path : paths) {
                path.voices = {};
            }
            continue;
        }
        std::size_t equalFrames = 0;
        std::vector<Path> fitting =
            goOn(engine, scenario, paths, recording[block], block, equalFrames);
        if (fitting.empty()) {
            if (std::all_of(recording.begin() + static_cast<std::ptrdiff_t>(block), recording.end(),
                            isSilent)) {
                result.muted = block;
            } else {
                result.difference = {block, equalFrames};
            }
            break;
        }
        paths = std::move(fitting);
    }
    result.hits = paths.front().hits;
    result.ambiguous = paths.size() > 1;
    return result;
}

} // namespace listen
