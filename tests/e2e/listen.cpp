// SPDX-License-Identifier: MIT
// listen replay RECORDING SCENARIO: compares every frame recorded by the fake winmm.dll with the
// engine's own rendering and finds the frame at which each voice was started. Prints
// "hit STEP BLOCK FRAME WRITTEN_NS" for every audible step: its position in the cycle, the block
// and the frame in it at which it begins, and when that block was written; or "difference BLOCK
// FRAME" where the scenario cannot produce the recorded sound. Exit code 1 means wrong sound, 2
// wrong usage.
//
// A scenario has a line "master VALUE", the dial 0..1, and a line "STEP SAMPLE SLIDER" per voice of
// the cycle, sliders 0..650, in the order in which the voices start.

#include "listen_recording.h"

#include "assets/assets.h"
#include "audio/sound_engine.h"
#include "panel/control_state.h"
#include "pattern/instruments.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <span>
#include <string>
#include <tuple>
#include <utility>
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
    bool firstOfStep = false; // late voices of one step may start at different frames
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

// The frames of one opening of the device, and the engine at the frame that is compared next.
class Stream {
public:
    Stream(percussomatic::SoundEngine& engine, const std::vector<Trigger>& cycle)
        : engine_(engine), cycle_(cycle) {}

    // Continues with the frames of another opening. Closing the device has ended all voices.
    void open(std::vector<std::int16_t> frames) {
        engine_.deactivateAllVoices();
        frames_ = std::move(frames);
        at_ = 0;
    }
    std::size_t at() const { return at_; }
    std::size_t played() const { return played_; }

    // Advances to where the next voices start, starts them and returns how many; 0 at the end, -1
    // if no voices lead to the recorded sound.
    int advance() {
        while (at_ < frames_.size() / 2) {
            const std::size_t window = std::min(kWindow, frames_.size() / 2 - at_);
            const std::size_t equal = equalFrames(window);
            if (equal < window && isSilentFrom(at_ + equal)) {
                return 0; // the program mutes the output before it closes the device
            }
            if (equal < window) {
                return startVoices(window, equal);
            }
            render(window == kWindow ? kWindow - kMaxOnset : window);
        }
        return 0;
    }

private:
    static constexpr std::size_t kWindow = 4096;
    static constexpr std::size_t kMaxOnset = 256;   // until a voice is audible
    static constexpr std::size_t kConvincing = 600; // equal frames after that
    static constexpr int kMaxVoices = 12;           // two late steps may start together

    bool isSilentFrom(std::size_t frame) const {
        return std::all_of(frames_.begin() + static_cast<std::ptrdiff_t>(2 * frame), frames_.end(),
                           [](std::int16_t value) { return value == 0; });
    }

    void trigger(int voices) {
        for (std::size_t next = played_; voices > 0; --voices, ++next) {
            const Trigger& trigger = cycle_[next % cycle_.size()];
            engine_.trigger(trigger.sampleIndex, trigger.gain);
        }
    }

    void render(std::size_t frames) {
        std::vector<std::int16_t> rendered(2 * frames);
        engine_.renderBlock(rendered.data(), static_cast<std::uint32_t>(frames));
        at_ += frames;
    }

    // Number of frames from here on that equal the recording, at most `limit`. Does not advance.
    std::size_t equalFrames(std::size_t limit) {
        constexpr std::size_t kChunk = 64;
        const auto voices = engine_.voices;
        std::array<std::int16_t, 2 * kChunk> rendered{};
        std::size_t equal = 0;
        while (equal < limit) {
            const std::size_t count = std::min(kChunk, limit - equal);
            engine_.renderBlock(rendered.data(), static_cast<std::uint32_t>(count));
            const std::int16_t* const begin = rendered.data();
            const std::int16_t* const end = begin + 2 * count;
            const std::int16_t* const different =
                std::mismatch(begin, end, std::as_const(frames_).data() + 2 * (at_ + equal)).first;
            equal += static_cast<std::size_t>(different - begin) / 2;
            if (different != end) {
                break;
            }
        }
        engine_.voices = voices;
        return equal;
    }

    // Tries every frame at which voices may have started that are first heard after `equal` frames.
    int startVoices(std::size_t window, std::size_t equal) {
        const std::size_t begin = at_, first = equal - std::min(equal, kMaxOnset);
        render(first);
        std::size_t longest = equal, startFrame = 0;
        int started = -1;
        auto startState = engine_.voices;
        for (std::size_t frame = first; frame <= equal; ++frame) {
            const auto voices = engine_.voices;
            for (int count = 1; count <= kMaxVoices && longest < equal + kConvincing; ++count) {
                trigger(count);
                if (const std::size_t same = frame + equalFrames(window - frame); same > longest) {
                    std::tie(longest, startFrame, started) = std::tuple(same, frame, count);
                    startState = engine_.voices;
                }
                engine_.voices = voices;
            }
            render(1);
        }
        engine_.voices = startState;
        at_ = begin + startFrame;
        played_ += static_cast<std::size_t>(std::max(started, 0));
        return started;
    }

    percussomatic::SoundEngine& engine_;
    const std::vector<Trigger>& cycle_;
    std::vector<std::int16_t> frames_; // left, right
    std::size_t at_ = 0;               // frame
    std::size_t played_ = 0;           // triggers, over all cycles
};

// Prints the steps in the blocks of one opening.
bool printSteps(std::span<const Block> blocks, std::size_t firstNumber,
                const std::vector<Trigger>& cycle, Stream& stream) {
    std::vector<std::int16_t> frames;
    std::vector<std::size_t> ends; // of the blocks, in frames
    for (const Block& block : blocks) {
        frames.insert(frames.end(), block.samples.begin(), block.samples.end());
        ends.push_back(frames.size() / 2);
    }
    stream.open(std::move(frames));
    for (std::size_t trigger = stream.played(); const int started = stream.advance();) {
        const auto block =
            static_cast<std::size_t>(std::ranges::upper_bound(ends, stream.at()) - ends.begin());
        const std::size_t begin = block == 0 ? 0 : ends[block - 1];
        if (started < 0) {
            std::cout << "difference " << firstNumber + block << ' ' << stream.at() - begin << '\n';
            return false;
        }
        for (; trigger < stream.played(); ++trigger) {
            if (const Trigger& each = cycle[trigger % cycle.size()]; each.firstOfStep) {
                std::cout << "hit " << each.step << ' ' << firstNumber + block << ' '
                          << stream.at() - begin << ' ' << blocks[block].header.writtenNs << '\n';
            }
        }
    }
    return true;
}

int printReplay(const std::vector<Block>& recording, const std::vector<Trigger>& cycle,
                percussomatic::SoundEngine& engine) {
    Stream stream(engine, cycle);
    const auto opens = [](const Block& block) { return block.samples.empty(); };
    for (auto begin = recording.begin(); begin != recording.end();) {
        const auto end = std::find_if(begin + 1, recording.end(), opens);
        const auto first = static_cast<std::size_t>(begin - recording.begin());
        if (!printSteps({begin, end}, first, cycle, stream)) {
            return kWrongSound;
        }
        begin = end;
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
