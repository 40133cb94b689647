#include "win32/audio/wave_out.h"

#include <algorithm>
#include <bit>
#include <system_error>

namespace percussomatic {

namespace {

constexpr WORD kChannels = 2;
constexpr WORD kBitsPerSample = 16;
constexpr WORD kFrameBytes = kChannels * kBitsPerSample / 8;

constexpr DWORD kGivenUpMs = 2000; // a device that returns nothing for so long is gone
constexpr DWORD kFirstPauseMs = 500, kLongestPauseMs = 10000;

} // namespace

void ReturnedBuffers::push(OutputBuffer& buffer) noexcept {
    slots_[pushed_.fetch_add(1) % slots_.size()] = &buffer;
}

OutputBuffer* ReturnedBuffers::pop() noexcept {
    OutputBuffer* buffer = slots_[popped_ % slots_.size()].exchange(nullptr);
    if (buffer != nullptr) {
        ++popped_;
    }
    return buffer;
}

void ReturnedBuffers::clear() noexcept {
    for (auto& slot : slots_) {
        slot = nullptr;
    }
    pushed_ = 0;
    popped_ = 0;
}

WaveOut::WaveOut(SoundEngine& soundEngine)
    : engine(soundEngine), wake_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    made_.push_back(std::make_unique<OutputBuffers>());
    buffers = made_.back().get();
}

WaveOut::~WaveOut() {
    stop();
    if (wake_ != nullptr) {
        CloseHandle(wake_);
    }
}

bool WaveOut::start() {
    stop();
    ResetEvent(wake_); // what woke the refill of the run before
    ending_ = false;
    pauseMs_ = kFirstPauseMs;
    const bool opened = open();
    // The refill begins after the last of the first blocks: the order of rendering is the order of
    // writing only while one thread at a time does both.
    if (wake_ == nullptr || !startRefill()) {
        closeDevice();
        return false;
    }
    return opened;
}

void WaveOut::stop() {
    if (refill_.joinable()) {
        ending_ = true;
        SetEvent(wake_);
        refill_.join();
    }
    // From the join on no buffer is written, so the completions of the reset find nobody.
    closeDevice();
}

bool WaveOut::open() {
    engine.prepareForDevice();
    returned_.clear();
    closing = false;
    if (!openDevice()) {
        return false;
    }
    if (!queueBuffers()) {
        closeDevice();
        return false;
    }
    return true;
}

bool WaveOut::openDevice() {
    WAVEFORMATEX format{};
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = kChannels;
    format.nSamplesPerSec = kDeviceRateHz;
    format.nAvgBytesPerSec = kDeviceRateHz * kFrameBytes;
    format.nBlockAlign = kFrameBytes;
    format.wBitsPerSample = kBitsPerSample;

    HWAVEOUT opened = nullptr;
    if (waveOutOpen(&opened, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(&onDeviceCallback),
                    reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION) != MMSYSERR_NOERROR) {
        return false;
    }
    device = opened;
    return true;
}

// Renders while it queues, so that a voice triggered before the start sounds from the first frame.
bool WaveOut::queueBuffers() {
    OutputBuffers& all = *buffers;
    for (OutputBuffer& buffer : all) {
        buffer.samples.fill(0);
        buffer.withDevice = false;
        buffer.header = {};
        buffer.header.lpData = reinterpret_cast<LPSTR>(buffer.samples.data());
        buffer.header.dwBufferLength = sizeof(buffer.samples);
    }
    return std::all_of(all.begin(), all.end(), [this](OutputBuffer& buffer) {
        if (waveOutPrepareHeader(device, &buffer.header, sizeof(WAVEHDR)) != MMSYSERR_NOERROR) {
            return false;
        }
        engine.renderBlock(buffer.samples.data(), kDeviceBufferFrames);
        write(buffer);
        return true;
    });
}

bool WaveOut::startRefill() noexcept {
    try {
        refill_ = std::thread([this] { keepPlaying(); });
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void WaveOut::keepPlaying() noexcept {
    // A late refill is heard at once, and one takes a few hundredths of its 10.7 ms.
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    while (!ending_) {
        if (device != nullptr) {
            refillReturned();
        } else {
            lookForDevice();
        }
    }
}

// Until the device stops answering.
void WaveOut::refillReturned() noexcept {
    while (!ending_) {
        if (OutputBuffer* buffer = returned_.pop(); buffer != nullptr) {
            engine.renderBlock(buffer->samples.data(), kDeviceBufferFrames);
            countIfLate();
            write(*buffer);
            pauseMs_ = kFirstPauseMs; // not when it opens: one that never answers opens, too
        } else if (WaitForSingleObject(wake_, kGivenUpMs) == WAIT_TIMEOUT) {
            closeDevice();
            return;
        }
    }
}

void WaveOut::lookForDevice() noexcept {
    WaitForSingleObject(wake_, pauseMs_);
    if (!ending_) {
        pauseMs_ = std::min(2 * pauseMs_, kLongestPauseMs);
        engine.deactivateAllVoices(); // or all that was struck meanwhile would sound at once
        open();
    }
}

// The result is not looked at: a device that takes no buffer is found by its silence.
void WaveOut::write(OutputBuffer& buffer) const noexcept {
    buffer.withDevice = true;
    waveOutWrite(device, &buffer.header, sizeof(WAVEHDR));
}

// Before a write: with no buffer left at the device there is a gap in the sound.
void WaveOut::countIfLate() noexcept {
    const OutputBuffers& all = *buffers;
    if (std::none_of(all.begin(), all.end(),
                     [](const OutputBuffer& buffer) { return buffer.withDevice.load(); })) {
        ++lateBuffers;
    }
}

// Nothing without a device.
void WaveOut::closeDevice() noexcept {
    if (device == nullptr) {
        return;
    }
    closing = true;
    waveOutReset(device);
    for (OutputBuffer& buffer : *buffers) {
        buffer.withDevice = false; // also one that a dead device has swallowed
        if ((buffer.header.dwFlags & WHDR_PREPARED) != 0) {
            waveOutUnprepareHeader(device, &buffer.header, sizeof(WAVEHDR));
        }
    }
    if (waveOutClose(device) != MMSYSERR_NOERROR) {
        // The driver may still have the buffers. They are left to it, until the program ends.
        made_.push_back(std::make_unique<OutputBuffers>());
        buffers = made_.back().get();
    }
    device = nullptr;
    engine.deactivateAllVoices();
}

void CALLBACK WaveOut::onDeviceCallback(HWAVEOUT /*device*/, UINT message, DWORD_PTR instance,
                                        DWORD_PTR firstParameter, DWORD_PTR /*secondParameter*/) {
    auto* out = std::bit_cast<WaveOut*>(instance);
    const auto* header = std::bit_cast<const WAVEHDR*>(firstParameter);
    if (message != WOM_DONE || out == nullptr || header == nullptr || out->closing) {
        return;
    }
    for (OutputBuffer& buffer : *out->buffers) {
        if (&buffer.header == header && buffer.withDevice.exchange(false)) {
            out->returned_.push(buffer);
            SetEvent(out->wake_); // one of the few calls allowed here
        }
    }
}

WaveOut& waveOut() noexcept {
    static WaveOut instance(soundEngine());
    return instance;
}

} // namespace percussomatic
