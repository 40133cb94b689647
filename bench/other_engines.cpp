// SPDX-License-Identifier: MIT
// How does the mixer compare with two well-known engines doing the same work? 64 stereo
// voices at 96 kHz, resampled to 48 kHz with linear interpolation, from random positions of
// the same recordings, in blocks of 512 frames on one core.
//
// FluidSynth plays mono voices, so it gets 64 pairs, panned hard left and right. They loop
// over the whole recording with a sustained envelope at full level, without chorus and with
// the low-pass fully open. It stores recordings as 16-bit samples, half the memory of ours,
// and renders floats, so it does not dither. With the reverb on, each voice has a send, as
// in our engine.
//
// OpenAL Soft renders 64 looping stereo sources to a loopback device with 16-bit output,
// directly to the two channels: no panning, no HRTF, no limiter, no effects.

#include "busy_engine.h"
#include "rounds.h"

#include <AL/al.h>
#include <AL/alc.h>
#include <AL/alext.h>
#include <fluidsynth.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace percussomatic {
namespace {

constexpr int kStereoVoices = 64;
constexpr int kBlockFrames = static_cast<int>(kDeviceBufferFrames);

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::exit(1);
    }
}

void renderOurs(benchmark::State& state, bool effect) {
    static BusyEngine<SoundEngine> busy;
    busy.play(kStereoVoices, effect);
    timeBlocks(state, [] { return busy.render(); });
}

class FluidSynth {
public:
    explicit FluidSynth(bool reverb) {
        fluid_settings_setnum(settings_, "synth.sample-rate", kDeviceRateHz);
        fluid_settings_setint(settings_, "synth.polyphony", 2 * kStereoVoices);
        fluid_settings_setint(settings_, "synth.cpu-cores", 1);
        fluid_settings_setint(settings_, "synth.reverb.active", reverb ? 1 : 0);
        fluid_settings_setint(settings_, "synth.chorus.active", 0);
        synth_ = new_fluid_synth(settings_);
        fluid_synth_set_interp_method(synth_, -1, FLUID_INTERP_LINEAR);
        for (const Sample& sample : recordings()) {
            samples_.push_back({addSample(sample.left.frames()), addSample(sample.right.frames())});
        }
        std::mt19937 random(1);
        for (std::size_t voice = 0; voice < kStereoVoices; ++voice) {
            const auto start = randomFrame(random);
            startVoice(samples_[voice % kInstruments][0], start, -500.0f);
            startVoice(samples_[voice % kInstruments][1], start, 500.0f);
        }
        // Skip the attack, then check that all voices really play.
        for (int block = 0; block < 20; ++block) {
            render();
        }
        require(fluid_synth_get_active_voice_count(synth_) == 2 * kStereoVoices,
                "FluidSynth lost voices");
        require(std::fabs(left_[0]) > 1e-4f && left_[0] != right_[0], "FluidSynth is silent");
    }

    const float* render() {
        fluid_synth_write_float(synth_, kBlockFrames, left_.data(), 0, 1, right_.data(), 0, 1);
        return left_.data();
    }

private:
    static fluid_sample_t* addSample(const std::vector<float>& plane) {
        std::vector<short> pcm;
        pcm.reserve(plane.size());
        for (const float value : plane) {
            pcm.push_back(static_cast<short>(value * 32767.0f));
        }
        fluid_sample_t* const sample = new_fluid_sample();
        fluid_sample_set_sound_data(sample, pcm.data(), nullptr, kRecordingFrames,
                                    2 * kDeviceRateHz, 1);
        fluid_sample_set_loop(sample, 8, kRecordingFrames - 8);
        fluid_sample_set_pitch(sample, 60, 0);
        return sample;
    }

    void startVoice(fluid_sample_t* sample, std::uint32_t start, float pan) {
        fluid_voice_t* const voice = fluid_synth_alloc_voice(synth_, sample, 0, 60, 100);
        require(voice != nullptr, "FluidSynth has no free voice");
        fluid_voice_gen_set(voice, GEN_SAMPLEMODE, 1.0f); // loops
        const std::uint32_t coarse = start / 32768;
        const std::uint32_t fine = start % 32768;
        fluid_voice_gen_set(voice, GEN_STARTADDRCOARSEOFS, static_cast<float>(coarse));
        fluid_voice_gen_set(voice, GEN_STARTADDROFS, static_cast<float>(fine));
        fluid_voice_gen_set(voice, GEN_PAN, pan);           // 0.1 %
        fluid_voice_gen_set(voice, GEN_REVERBSEND, 500.0f); // 0.1 %
        fluid_synth_start_voice(synth_, voice);
    }

    fluid_settings_t* settings_ = new_fluid_settings(); // never freed: lives until the process ends
    fluid_synth_t* synth_ = nullptr;
    std::vector<std::array<fluid_sample_t*, 2>> samples_;
    std::array<float, kDeviceBufferFrames> left_{};
    std::array<float, kDeviceBufferFrames> right_{};
};

template <bool kReverb>
void renderFluidSynth(benchmark::State& state) {
    static FluidSynth fluidSynth(kReverb);
    timeBlocks(state, [] { return fluidSynth.render(); });
}

class OpenAl {
public:
    OpenAl() {
        const auto open = loadFunction<LPALCLOOPBACKOPENDEVICESOFT>("alcLoopbackOpenDeviceSOFT");
        device_ = open(nullptr);
        require(device_ != nullptr, "OpenAL has no loopback device");
        const ALCint attributes[] = {ALC_FORMAT_CHANNELS_SOFT,
                                     ALC_STEREO_SOFT,
                                     ALC_FORMAT_TYPE_SOFT,
                                     ALC_SHORT_SOFT,
                                     ALC_FREQUENCY,
                                     static_cast<ALCint>(kDeviceRateHz),
                                     ALC_STEREO_SOURCES,
                                     kStereoVoices,
                                     ALC_HRTF_SOFT,
                                     ALC_FALSE,
                                     ALC_OUTPUT_LIMITER_SOFT,
                                     ALC_FALSE,
                                     0};
        context_ = alcCreateContext(device_, attributes);
        alcMakeContextCurrent(context_);
        std::array<ALuint, kInstruments> buffers{};
        alGenBuffers(kInstruments, buffers.data());
        for (std::size_t i = 0; i < kInstruments; ++i) {
            std::vector<float> interleaved;
            for (std::size_t frame = 0; frame < kRecordingFrames; ++frame) {
                interleaved.push_back(recordings()[i].left[frame]);
                interleaved.push_back(recordings()[i].right[frame]);
            }
            alBufferData(buffers[i], AL_FORMAT_STEREO_FLOAT32, interleaved.data(),
                         static_cast<ALsizei>(interleaved.size() * sizeof(float)),
                         2 * kDeviceRateHz);
        }
        std::array<ALuint, kStereoVoices> sources{};
        alGenSources(kStereoVoices, sources.data());
        const ALint resampler = linearResampler();
        std::mt19937 random(1);
        for (std::size_t i = 0; i < kStereoVoices; ++i) {
            alSourcei(sources[i], AL_BUFFER, static_cast<ALint>(buffers[i % kInstruments]));
            alSourcei(sources[i], AL_LOOPING, AL_TRUE);
            alSourcei(sources[i], AL_DIRECT_CHANNELS_SOFT, AL_TRUE);
            alSourcei(sources[i], AL_SOURCE_RESAMPLER_SOFT, resampler);
            alSourcei(sources[i], AL_SAMPLE_OFFSET, static_cast<ALint>(randomFrame(random)));
            alSourcef(sources[i], AL_GAIN, 0.1f);
        }
        alSourcePlayv(kStereoVoices, sources.data());
        require(alGetError() == AL_NO_ERROR, "OpenAL reports an error for the sources");
        render();
        render();
        require(out_[0] != 0 && out_[0] != out_[1], "OpenAL is silent");
    }

    ~OpenAl() {
        alcMakeContextCurrent(nullptr);
        alcDestroyContext(context_);
        alcCloseDevice(device_);
    }
    OpenAl(const OpenAl&) = delete;
    OpenAl& operator=(const OpenAl&) = delete;

    const std::int16_t* render() {
        render_(device_, out_.data(), kBlockFrames);
        return out_.data();
    }

private:
    template <typename Function>
    static Function loadFunction(const char* name) {
        Function found = nullptr;
        void* const address = alcGetProcAddress(nullptr, name);
        static_assert(sizeof found == sizeof address);
        std::memcpy(&found, &address, sizeof found);
        require(found != nullptr, name);
        return found;
    }

    static ALint linearResampler() {
        LPALGETSTRINGISOFT nameOf = nullptr;
        void* const address = alGetProcAddress("alGetStringiSOFT");
        std::memcpy(&nameOf, &address, sizeof nameOf);
        require(nameOf != nullptr, "OpenAL cannot select a resampler");
        for (ALint i = 0; i < alGetInteger(AL_NUM_RESAMPLERS_SOFT); ++i) {
            if (std::strcmp(nameOf(AL_RESAMPLER_NAME_SOFT, i), "Linear") == 0) {
                return i;
            }
        }
        require(false, "OpenAL has no linear resampler");
        return 0;
    }

    LPALCRENDERSAMPLESSOFT render_ = loadFunction<LPALCRENDERSAMPLESSOFT>("alcRenderSamplesSOFT");
    ALCdevice* device_ = nullptr;
    ALCcontext* context_ = nullptr;
    std::array<std::int16_t, std::size_t{kDeviceBufferFrames} * 2> out_{};
};

void renderOpenAl(benchmark::State& state) {
    static OpenAl openAl;
    timeBlocks(state, [] { return openAl.render(); });
}

void registerBenchmarks() {
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("64 voices, effect off", renderOurs, false);
    RegisterBenchmark("64 voices, effect on", renderOurs, true);
    RegisterBenchmark("64 voices, effect off, against FluidSynth", renderFluidSynth<false>);
    RegisterBenchmark("64 voices, effect on, against FluidSynth", renderFluidSynth<true>);
    RegisterBenchmark("64 voices, effect off, against OpenAL Soft", renderOpenAl);
}

} // namespace
} // namespace percussomatic

int main(int argc, char** argv) {
    percussomatic::registerBenchmarks();
    return percussomatic::runRounds(argc, argv);
}
