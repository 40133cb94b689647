// SPDX-License-Identifier: MIT
// listen replay RECORDING SCENARIO: compares every block recorded by the fake winmm.dll with the
// engine's own rendering and finds the block before which each voice was started. Prints
// "hit STEP BLOCK WRITTEN_NS" for every audible step: its position in the cycle and the first block
// that contains it; or "difference BLOCK FRAME" where the scenario cannot produce the recorded
// sound. Exit code 1 means wrong sound, 2 wrong usage.
//
// A scenario has a line "master VALUE", the dial 0..1, and a line "STEP SAMPLE SLIDER" per voice of
// the cycle, sliders 0..650, in the order in which the voices start.

#include "listen_recording.h"

#include "assets/assets.h"
#include "audio/sound_engine.h"
#include "panel/control_state.h"
#include "pattern/instruments.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int kWrongSound = 1;
constexpr int kWrongUsage = 2;

struct Block {
    listen::BlockHeader header;
    std::vector<std::int16_t> samples;
};

struct Trigger {
    int step = 0;             // position in the cycle
    bool firstOfStep = false; // voices of one step may start before different blocks
    std::int32_t sampleIndex = 0;
    float gain = 1.0f;
};

// Reads all complete entries; the last one may be truncated if the program was killed.
std::vector<Block> readRecording(const char* path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<Block> blocks;
    Block block;
    while (file.read(reinterpret_cast<char*>(&block.header), sizeof(block.header))) {
        block.samples.resize(static_cast<std::size_t>(block.header.frames) * 2);
        if (file.read(reinterpret_cast<char*>(block.samples.data()),
                      block.header.frames * static_cast<std::int64_t>(listen::kFrameBytes))) {
            blocks.push_back(block);
        }
    }
    return blocks;
}

std::vector<Trigger> readScenario(const char* path, float& master) {
    std::ifstream text(path);
    std::string word;
    text >> word >> master;
    std::vector<Trigger> cycle;
    float slider = 0;
    for (Trigger voice; text >> voice.step >> voice.sampleIndex >> slider;) {
        voice.firstOfStep = cycle.empty() || cycle.back().step != voice.step;
        voice.gain = slider / percussomatic::kSliderTravel;
        cycle.push_back(voice);
    }
    return cycle;
}

// Renders each block with 0, 1, 2, ... voices started before it until it equals the recorded block.
// This works because every instrument is audible within its first block.
int printReplay(const std::vector<Block>& recording, const std::vector<Trigger>& cycle,
                percussomatic::SoundEngine& engine) {
    constexpr std::size_t kMaxVoicesPerBlock = 12; // two late steps
    std::size_t played = 0;                        // triggers, over all cycles
    for (std::size_t number = 0; number < recording.size(); ++number) {
        const auto& [header, samples] = recording[number];
        if (samples.empty()) {
            engine.deactivateAllVoices(); // the device was closed, which ends them
            continue;
        }
        const auto voices = engine.voices;
        std::vector<std::int16_t> rendered(samples.size());
        std::ptrdiff_t longest = 0; // equal samples of the best attempt
        std::size_t started = 0;
        for (;; ++started) {
            engine.voices = voices;
            for (std::size_t next = played; next < played + started; ++next) {
                const Trigger& trigger = cycle[next % cycle.size()];
                engine.trigger(trigger.sampleIndex, trigger.gain);
            }
            engine.renderBlock(rendered.data(), static_cast<std::uint32_t>(header.frames));
            if (rendered == samples) {
                break;
            }
            longest =
                std::max(longest, std::ranges::mismatch(rendered, samples).in1 - rendered.begin());
            if (started == kMaxVoicesPerBlock) {
                std::cout << "difference " << number << ' ' << longest / 2 << '\n';
                return kWrongSound;
            }
        }
        for (; started > 0; --started, ++played) {
            if (const Trigger& trigger = cycle[played % cycle.size()]; trigger.firstOfStep) {
                std::cout << "hit " << trigger.step << ' ' << number << ' ' << header.writtenNs
                          << '\n';
            }
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const bool validUsage = argc == 4 && argv[1] == std::string("replay");
    float master = 1.0f;
    const std::vector<Block> recording = readRecording(validUsage ? argv[2] : "");
    const std::vector<Trigger> cycle = readScenario(validUsage ? argv[3] : "", master);
    if (recording.empty() || cycle.empty()) {
        std::cerr << "usage: listen replay RECORDING SCENARIO (both non-empty)\n";
        return kWrongUsage;
    }
    percussomatic::SoundEngine& engine = percussomatic::soundEngine();
    engine.prepareForDevice();
    engine.setMasterVolume(master * master);
    for (const percussomatic::Instrument& instrument : percussomatic::kInstruments) {
        const percussomatic::AssetBytes asset = percussomatic::findAsset(instrument.recording);
        engine.loadSample(asset.bytes, asset.size);
    }
    return printReplay(recording, cycle, engine);
}
