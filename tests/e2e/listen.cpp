// listen: what can be heard of the program, as lines of text for the end-to-end tests. Ends with 1
// when the sound is not what it should be, with 2 when it was called wrongly.
//
//   listen replay RECORDING SCENARIO    the steps in what the stand-in for winmm.dll wrote down:
//       "blocks N", "opens N", "dry N" (times that the queue ran dry), then for every step with a
//       sound "hit STEP BLOCK HANDED_NS STARTS_NS LAST_BLOCK COUNT": its place in the cycle, the
//       first block it is heard in and its times, the block of its last voice, the steps before it
//       in all; "muted BLOCK" when all is silent from there on, "ambiguous" when another reading
//       fits as well, "difference BLOCK FRAME" when none does
//   listen match CAPTURE ASSET [GAIN]   the hits of one recording in raw 16-bit stereo of 48 kHz:
//       "hit FRAME LIKENESS GAIN"
//   listen show RECORDING               per block "HANDED_NS STARTS_NS FRAMES PEAK"

#include "listen_match.h"
#include "listen_recording.h"
#include "listen_replay.h"

#include "audio/sound_engine.h"
#include "sequencer/sequencer.h"
#include "ui/assets.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using percussomatic::SoundEngine;

constexpr int kWrongSound = 1;
constexpr int kMisused = 2;

int misused(const std::string& why) {
    std::cerr << "listen: " << why << '\n';
    return kMisused;
}

std::int32_t load(SoundEngine& engine, std::string_view name) {
    const percussomatic::AssetBytes asset = percussomatic::findAsset(name);
    return engine.loadSample(asset.bytes, asset.size);
}

int countDry(const std::vector<listen::Block>& recording) {
    constexpr std::int64_t kNsPerSecond = 1'000'000'000;
    int dry = 0;
    for (std::size_t block = 1; block < recording.size(); ++block) {
        const listen::BlockHead& before = recording[block - 1].head;
        const std::int64_t endsNs =
            before.startsNs + before.frames * kNsPerSecond / percussomatic::kDeviceRateHz;
        if (before.frames > 0 && recording[block].head.frames > 0 &&
            recording[block].head.startsNs > endsNs) {
            ++dry;
        }
    }
    return dry;
}

int printReplay(const std::string& recordingPath, const std::string& scenarioPath) {
    const auto recording = listen::readRecording(recordingPath);
    if (!recording) {
        return misused("no recording in " + recordingPath);
    }
    std::ifstream text(scenarioPath);
    const auto scenario = listen::readScenario(text);
    if (!scenario) {
        return misused("no scenario in " + scenarioPath);
    }
    SoundEngine& engine = percussomatic::soundEngine();
    engine.prepareForDevice();
    for (const percussomatic::RhythmLine& line : percussomatic::kRhythmLines) {
        load(engine, line.sampleA);
        load(engine, line.sampleB);
    }
    const auto opens = std::count_if(recording->begin(), recording->end(),
                                     [](const auto& block) { return block.samples.empty(); });
    std::cout << "blocks " << recording->size() << "\nopens " << opens << "\ndry "
              << countDry(*recording) << '\n';
    const listen::Replay result = listen::replay(engine, *recording, *scenario);
    for (const listen::Hit& hit : result.hits) {
        const listen::BlockHead& head = (*recording)[hit.firstBlock].head;
        std::cout << "hit " << hit.step % scenario->cycle.size() << ' ' << hit.firstBlock << ' '
                  << head.handedNs << ' ' << head.startsNs << ' ' << hit.lastBlock << ' '
                  << hit.step << '\n';
    }
    if (result.muted) {
        std::cout << "muted " << *result.muted << '\n';
    }
    if (result.ambiguous) {
        std::cout << "ambiguous\n";
    }
    if (result.difference) {
        std::cout << "difference " << result.difference->block << ' ' << result.difference->frame
                  << '\n';
        return kWrongSound;
    }
    return 0;
}

int printMatches(const std::string& capturePath, const std::string& asset, double gain) {
    SoundEngine& engine = percussomatic::soundEngine();
    if (load(engine, asset) < 0) {
        return misused("no recording is called " + asset);
    }
    std::ifstream file(capturePath, std::ios::binary);
    if (!file) {
        return misused("no capture in " + capturePath);
    }
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::int16_t> capture(bytes.size() / sizeof(std::int16_t));
    std::copy_n(bytes.data(), capture.size() * sizeof(std::int16_t),
                reinterpret_cast<char*>(capture.data()));
    for (const listen::Found& hit : listen::findHits(capture, engine.samples.front(), gain)) {
        std::cout << "hit " << hit.frame << ' ' << hit.likeness << ' ' << hit.gain << '\n';
    }
    return 0;
}

int printBlocks(const std::string& recordingPath) {
    const auto recording = listen::readRecording(recordingPath);
    if (!recording) {
        return misused("no recording in " + recordingPath);
    }
    for (const listen::Block& block : *recording) {
        int peak = 0;
        for (const std::int16_t sample : block.samples) {
            peak = std::max(peak, std::abs(int{sample}));
        }
        std::cout << block.head.handedNs << ' ' << block.head.startsNs << ' ' << block.head.frames
                  << ' ' << peak << '\n';
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const std::string task = words.empty() ? "" : words[0];
    if (task == "replay" && words.size() == 3) {
        return printReplay(words[1], words[2]);
    }
    if (task == "match" && (words.size() == 3 || words.size() == 4)) {
        const double gain = words.size() == 4 ? std::strtod(words[3].c_str(), nullptr) : 1.0;
        return printMatches(words[1], words[2], gain);
    }
    if (task == "show" && words.size() == 2) {
        return printBlocks(words[1]);
    }
    return misused("replay RECORDING SCENARIO | match CAPTURE ASSET [GAIN] | show RECORDING");
}
