// SPDX-License-Identifier: MIT
#include "commands.h"

#include "assets/assets.h"
#include "audio/sound_engine.h"
#include "cards/card_settings.h"
#include "files.h"
#include "interrupt.h"
#include "output_file.h"
#include "playback.h"

#include <algorithm>
#include <cmath>
#include <iostream>

namespace percussomatic::tool {

namespace {

constexpr std::uint32_t kChannels = 2;
constexpr std::uint32_t kBytesPerFrame = kChannels * sizeof(std::int16_t);
constexpr std::uint32_t kHeaderBytes = 44;
constexpr std::uint32_t kMaxFrames = (0xFFFFFFFFU - kHeaderBytes) / kBytesPerFrame; // per file

constexpr double kMaxTailSeconds = 600.0;
constexpr double kDefaultTailSeconds = 2.0;
constexpr std::uint64_t kDefaultBars = 4;

using SampleIndices = std::array<std::int32_t, kInstrumentCount>;

// Where the steps start and where the file ends, in frames.
struct Timeline {
    double stepFrames = 0.0;
    std::uint64_t steps = 0;
    std::uint64_t frames = 0;

    std::uint64_t startOf(std::uint64_t step) const {
        return static_cast<std::uint64_t>(std::floor(static_cast<double>(step) * stepFrames));
    }
};

// Nullopt if the file would be too long.
std::optional<Timeline> timelineOf(const Arguments& arguments, const PunchCard& card, double bpm) {
    const auto bars = arguments.count("--bars");
    const auto steps = arguments.count("--steps");
    const double tailSeconds =
        arguments.number("--tail", 0.0, kMaxTailSeconds).value_or(kDefaultTailSeconds);
    Timeline timeline{.stepFrames = double{kDeviceRateHz} * 60.0 / (bpm * 4.0)};
    const double stepCount = steps ? static_cast<double>(*steps)
                                   : static_cast<double>(bars.value_or(kDefaultBars)) *
                                         static_cast<double>(card.sequenceLength);
    const double tailFrames = std::floor(tailSeconds * kDeviceRateHz);
    if (std::floor(stepCount * timeline.stepFrames) + tailFrames > kMaxFrames) {
        return {};
    }
    timeline.steps = static_cast<std::uint64_t>(stepCount);
    timeline.frames = timeline.startOf(timeline.steps) + static_cast<std::uint64_t>(tailFrames);
    return timeline;
}

// -1 for an instrument that stays silent.
std::int32_t loadFromFile(const std::string& file) {
    const ReadRecording recording = readRecording(pathFromUtf8(file));
    if (!recording.fault.empty()) {
        reportError(file, "warning: cannot be read: " + recording.fault +
                              "; the instrument stays silent");
        return -1;
    }
    const std::int32_t index =
        soundEngine().loadSample(recording.bytes.data(), recording.bytes.size());
    if (index < 0) {
        reportError(file, "warning: is not a recording that the instrument can play");
    }
    return index;
}

// A missing folder would give a silent file. Reports the error.
bool hasUsableFolder(const Arguments& arguments) {
    const auto folder = arguments.options.find("--recordings");
    const std::string fault =
        folder == arguments.options.end() ? "" : folderFault(pathFromUtf8(folder->second));
    if (!fault.empty()) {
        reportError(folder->second, fault + "; expected a folder with recordings");
    }
    return fault.empty();
}

SampleIndices loadRecordings(const Arguments& arguments) {
    const auto folder = arguments.options.find("--recordings");
    SampleIndices indices;
    indices.fill(-1);
    for (std::size_t at = 0; at < kInstruments.size() && !interrupted(); ++at) {
        if (folder == arguments.options.end()) {
            const AssetBytes asset = findAsset(kInstruments[at].recording);
            indices[at] = soundEngine().loadSample(asset.bytes, asset.size);
        } else {
            indices[at] =
                loadFromFile(folder->second + '/' + std::string(kInstruments[at].recording));
        }
    }
    return indices;
}

// Sets up the engine as the instrument does at start-up and then when it loads the card.
SampleIndices prepareEngine(const Arguments& arguments, const PunchCard& card) {
    constexpr float kSilence = 1.0e-5f;
    SoundEngine& engine = soundEngine();
    engine.prepareForDevice();
    engine.setEffectPreset(0);
    engine.setEffectEnabled(false);
    for (std::uint32_t index = 0; index < kInstrumentCount; ++index) {
        engine.setSend(index, 0.0f);
    }
    engine.setAutoStop(true, kSilence, 100, 50);
    const SampleIndices indices = loadRecordings(arguments);

    const double master = masterRotaryOf(card);
    engine.setMasterVolume(static_cast<float>(master * master));
    applyCardEffect(card);
    return indices;
}

void appendLittleEndian(std::string& bytes, std::uint32_t value, std::uint32_t count) {
    for (std::uint32_t byte = 0; byte < count; ++byte) {
        bytes += static_cast<char>(value >> (8 * byte) & 0xFFU);
    }
}

std::string waveHeader(std::uint64_t frames) {
    const auto audioBytes = static_cast<std::uint32_t>(frames * kBytesPerFrame);
    std::string bytes = "RIFF";
    appendLittleEndian(bytes, audioBytes + kHeaderBytes - 8, 4);
    bytes += "WAVEfmt ";
    appendLittleEndian(bytes, 16, 4);
    appendLittleEndian(bytes, 1, 2); // PCM
    appendLittleEndian(bytes, kChannels, 2);
    appendLittleEndian(bytes, kDeviceRateHz, 4);
    appendLittleEndian(bytes, kDeviceRateHz * kBytesPerFrame, 4);
    appendLittleEndian(bytes, kBytesPerFrame, 2);
    appendLittleEndian(bytes, 16, 2);
    bytes += "data";
    appendLittleEndian(bytes, audioBytes, 4);
    return bytes;
}

// Shows the percentage done while a long file is rendered, if stderr is a terminal.
class Progress {
public:
    explicit Progress(std::uint64_t frames)
        : frames_(frames), shown_(frames >= kMinFramesToShow && stderrIsTerminal()) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() {
        if (shown_) {
            std::cerr << "\r              \r" << std::flush;
        }
    }

    void update(std::uint64_t frame) {
        const std::uint64_t percent = 100 * frame / frames_;
        if (shown_ && percent != percent_) {
            percent_ = percent;
            std::cerr << "\rrendering " << percent << " %" << std::flush;
        }
    }

private:
    static constexpr std::uint64_t kMinFramesToShow = std::uint64_t{60} * kDeviceRateHz;

    std::uint64_t frames_;
    std::uint64_t percent_ = 0;
    bool shown_;
};

// Renders from `frame` to `end`; stops early if interrupted or if the file cannot be written.
void renderFrames(OutputFile& output, std::uint64_t frame, std::uint64_t end, Progress& progress) {
    std::array<std::int16_t, std::size_t{kDeviceBufferFrames} * kChannels> block{};
    while (frame < end && !interrupted() && !output.failed()) {
        const auto count =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(end - frame, kDeviceBufferFrames));
        soundEngine().renderBlock(block.data(), count);
        std::string bytes;
        bytes.reserve(std::size_t{count} * kBytesPerFrame);
        for (std::size_t at = 0; at < std::size_t{count} * kChannels; ++at) {
            appendLittleEndian(bytes, static_cast<std::uint16_t>(block[at]), 2);
        }
        output.write(bytes);
        frame += count;
        progress.update(frame);
    }
}

void play(const Timeline& timeline, const PunchCard& card, const SampleIndices& indices,
          OutputFile& output) {
    Progress progress(timeline.frames);
    for (std::uint64_t step = 0; step < timeline.steps; ++step) {
        if (interrupted() || output.failed()) {
            return;
        }
        const auto column = static_cast<int>(step % card.sequenceLength);
        for (const Hit& hit : hitsOnStep(card, column)) {
            soundEngine().trigger(indices[hit.sampleIndex], hit.gain);
        }
        renderFrames(output, timeline.startOf(step), timeline.startOf(step + 1), progress);
    }
    renderFrames(output, timeline.startOf(timeline.steps), timeline.frames, progress);
}

} // namespace

int render(const Arguments& arguments) {
    if (arguments.has("--bars") && arguments.has("--steps")) {
        throw UsageError("--bars and --steps exclude each other");
    }
    arguments.count("--bars"); // reports an invalid command line before reading the card
    arguments.count("--steps");
    arguments.number("--tail", 0.0, kMaxTailSeconds);
    requireSeparateOutput(arguments);
    const auto read = readCard(arguments.operands[0]);
    if (!read || !hasUsableFolder(arguments)) {
        return kFailure;
    }
    const PunchCard card = withSettings(read->card);
    const auto timeline = timelineOf(arguments, card, tempoBpm(read->card));
    if (!timeline) {
        reportError(arguments.operands[1], "would exceed 4 GiB, the size limit of a WAVE file");
        return kFailure;
    }

    const InterruptGuard interruptGuard;
    OutputFile output(arguments.operands[1]);
    if (output.failed()) {
        return output.finish();
    }
    const SampleIndices indices = prepareEngine(arguments, card);
    if (soundEngine().samples.empty() && !interrupted()) {
        reportError(arguments.operands[1], "would be silent, as no recording can be played");
        return kFailure;
    }
    output.write(waveHeader(timeline->frames));
    play(*timeline, card, indices, output);
    const int code = output.finish();
    return code == kSuccess ? output.commit() : code;
}

} // namespace percussomatic::tool
