#include "commands.h"

#include "assets/assets.h"
#include "audio/sound_engine.h"
#include "cards/card_settings.h"
#include "files.h"
#include "playing.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <iostream>

namespace percussomatic::tool {

namespace {

constexpr std::uint32_t kChannels = 2;
constexpr std::uint32_t kFrameBytes = kChannels * sizeof(std::int16_t);
constexpr std::uint32_t kHeaderBytes = 44;
constexpr std::uint32_t kMostFrames = (0xFFFFFFFFU - kHeaderBytes) / kFrameBytes; // of one file

constexpr double kMostTailSeconds = 600.0;
constexpr double kPlainTailSeconds = 2.0;
constexpr std::uint64_t kPlainBars = 4;

volatile std::sig_atomic_t interrupted = 0;

// While one lives, an interrupt ends the rendering in order: nothing half-written stays behind.
class CatchInterrupts {
public:
    CatchInterrupts() {
        for (std::size_t at = 0; at < former_.size(); ++at) {
            former_[at] = std::signal(kSignals[at], note);
        }
    }
    CatchInterrupts(const CatchInterrupts&) = delete;
    CatchInterrupts& operator=(const CatchInterrupts&) = delete;
    ~CatchInterrupts() {
        for (std::size_t at = 0; at < former_.size(); ++at) {
            std::signal(kSignals[at], former_[at]);
        }
    }

private:
    using Handler = void (*)(int);
    static void note(int) { interrupted = 1; }

#ifdef SIGHUP
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
#else
    static constexpr std::array kSignals{SIGINT, SIGTERM};
#endif
    std::array<Handler, kSignals.size()> former_{};
};

using SampleIndices = std::array<std::int32_t, kInstrumentCount>;

// The card's pace, and where the file ends.
struct Course {
    double stepFrames = 0.0;
    std::uint64_t steps = 0;
    std::uint64_t frames = 0;

    std::uint64_t startOf(std::uint64_t step) const {
        return static_cast<std::uint64_t>(std::floor(static_cast<double>(step) * stepFrames));
    }
};

// Nothing for a course that is too long for a file.
std::optional<Course> courseOf(const Arguments& arguments, const PunchCard& card, double bpm) {
    const auto bars = arguments.count("--bars");
    const auto steps = arguments.count("--steps");
    const double tailSeconds =
        arguments.number("--tail", 0.0, kMostTailSeconds).value_or(kPlainTailSeconds);
    Course course{.stepFrames = double{kDeviceRateHz} * 60.0 / (bpm * 4.0)};
    const double wanted = steps ? static_cast<double>(*steps)
                                : static_cast<double>(bars.value_or(kPlainBars)) *
                                      static_cast<double>(card.sequenceLength);
    const double tailFrames = std::floor(tailSeconds * kDeviceRateHz);
    if (std::floor(wanted * course.stepFrames) + tailFrames > kMostFrames) {
        return {};
    }
    course.steps = static_cast<std::uint64_t>(wanted);
    course.frames = course.startOf(course.steps) + static_cast<std::uint64_t>(tailFrames);
    return course;
}

SampleIndices loadRecordings(const Arguments& arguments) {
    const auto folder = arguments.options.find("--recordings");
    SampleIndices indices{};
    for (std::size_t at = 0; at < kInstruments.size(); ++at) {
        if (folder == arguments.options.end()) {
            const AssetBytes asset = findAsset(kInstruments[at].recording);
            indices[at] = soundEngine().loadSample(asset.bytes, asset.size);
            continue;
        }
        const std::string file = folder->second + '/' + std::string(kInstruments[at].recording);
        const auto bytes = readWhole(pathOf(file));
        indices[at] = bytes ? soundEngine().loadSample(bytes->data(), bytes->size()) : -1;
        if (indices[at] < 0) {
            tellFault(file, bytes ? "warning: is no recording that the instrument can play"
                                  : "warning: cannot be read; the instrument stays silent");
        }
    }
    return indices;
}

// As the instrument starts, and then as it stands after the card.
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
    const auto audioBytes = static_cast<std::uint32_t>(frames * kFrameBytes);
    std::string bytes = "RIFF";
    appendLittleEndian(bytes, audioBytes + kHeaderBytes - 8, 4);
    bytes += "WAVEfmt ";
    appendLittleEndian(bytes, 16, 4);
    appendLittleEndian(bytes, 1, 2); // PCM
    appendLittleEndian(bytes, kChannels, 2);
    appendLittleEndian(bytes, kDeviceRateHz, 4);
    appendLittleEndian(bytes, kDeviceRateHz * kFrameBytes, 4);
    appendLittleEndian(bytes, kFrameBytes, 2);
    appendLittleEndian(bytes, 16, 2);
    bytes += "data";
    appendLittleEndian(bytes, audioBytes, 4);
    return bytes;
}

// Counts percents on a terminal when the file is a long one.
class Progress {
public:
    explicit Progress(std::uint64_t frames)
        : frames_(frames), shown_(frames >= kLongFrames && errorsGoToTerminal()) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() {
        if (shown_) {
            std::cerr << "\r              \r" << std::flush;
        }
    }

    void at(std::uint64_t frame) {
        const std::uint64_t percent = 100 * frame / frames_;
        if (shown_ && percent != percent_) {
            percent_ = percent;
            std::cerr << "\rrendering " << percent << " %" << std::flush;
        }
    }

private:
    static constexpr std::uint64_t kLongFrames = std::uint64_t{60} * kDeviceRateHz;

    std::uint64_t frames_;
    std::uint64_t percent_ = 0;
    bool shown_;
};

// Up to the frame `end`, or until it is interrupted or cannot be written.
void renderFrames(FileReplacement& output, std::uint64_t frame, std::uint64_t end,
                  Progress& progress) {
    std::array<std::int16_t, std::size_t{kDeviceBufferFrames} * kChannels> block{};
    while (frame < end && interrupted == 0 && output.result() == SaveResult::saved) {
        const auto now =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(end - frame, kDeviceBufferFrames));
        soundEngine().renderBlock(block.data(), now);
        std::string bytes;
        bytes.reserve(std::size_t{now} * kFrameBytes);
        for (std::size_t at = 0; at < std::size_t{now} * kChannels; ++at) {
            appendLittleEndian(bytes, static_cast<std::uint16_t>(block[at]), 2);
        }
        output.write(bytes);
        frame += now;
        progress.at(frame);
    }
}

void play(const Course& course, const PunchCard& card, const SampleIndices& indices,
          FileReplacement& output) {
    Progress progress(course.frames);
    for (std::uint64_t step = 0; step < course.steps; ++step) {
        if (interrupted != 0 || output.result() != SaveResult::saved) {
            return;
        }
        const auto column = static_cast<int>(step % card.sequenceLength);
        for (const Stroke& stroke : strokesOn(card, column)) {
            soundEngine().trigger(indices[stroke.sampleIndex], stroke.gain);
        }
        renderFrames(output, course.startOf(step), course.startOf(step + 1), progress);
    }
    renderFrames(output, course.startOf(course.steps), course.frames, progress);
}

} // namespace

int render(const Arguments& arguments) {
    if (arguments.has("--bars") && arguments.has("--steps")) {
        throw Misuse("--bars and --steps exclude each other");
    }
    arguments.count("--bars"); // what is wrong with the command comes before what is with the card
    arguments.count("--steps");
    arguments.number("--tail", 0.0, kMostTailSeconds);
    keepCard(arguments);
    const auto read = readCard(arguments.operands[0]);
    if (!read) {
        return kFailed;
    }
    const PunchCard card = withSettings(read->card);
    const auto course = courseOf(arguments, card, tempoBpm(read->card));
    if (!course) {
        tellFault(arguments.operands[1], "would be longer than a WAVE file can be, 4 GiB");
        return kFailed;
    }

    const CatchInterrupts catching;
    FileReplacement output(pathOf(arguments.operands[1]));
    if (output.result() != SaveResult::saved) {
        return outcome(output.result(), arguments.operands[1]);
    }
    const SampleIndices indices = prepareEngine(arguments, card);
    output.write(waveHeader(course->frames));
    play(*course, card, indices, output);
    if (interrupted != 0) {
        return kFailed;
    }
    return outcome(output.commit(), arguments.operands[1]);
}

} // namespace percussomatic::tool
