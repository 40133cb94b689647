#include "audio/wave_out.h"

#include <algorithm>
#include <bit>
#include <system_error>

namespace percussomatic {

namespace {

constexpr WORD kChannels = 2;
constexpr WORD kBitsPerSample = 16;
constexpr WORD kFrameBytes = kChannels * kBitsPerSample / 8;

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
    : engine(soundEngine), wake_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

WaveOut::~WaveOut() {
    stop();
    if (wake_ != nullptr) {
        CloseHandle(wake_);
    }
}

bool WaveOut::start() {
    stop();
    engine.prepareForDevice();
    returned_.clear();
    closing = false;
    if (wake_ == nullptr || !openDevice()) {
        return false;
    }
    // The refill begins after the last of the first blocks: the order of rendering is the order of
    // writing only while one thread at a time does both.
    if (!queueBuffers() || !startRefill()) {
        closeDevice();
        return false;
    }
    return true;
}

void WaveOut::stop() {
    if (device != nullptr) {
        closeDevice();
    }
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
    for (OutputBuffer& buffer : buffers) {
        buffer.samples.fill(0);
        buffer.withDevice = false;
        buffer.header = {};
        buffer.header.lpData = reinterpret_cast<LPSTR>(buffer.samples.data());
        buffer.header.dwBufferLength = sizeof(buffer.samples);
    }
    return std::all_of(buffers.begin(), buffers.end(), [this](OutputBuffer& buffer) {
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
        refill_ = std::thread([this] { refillReturned(); });
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void WaveOut::refillReturned() noexcept {
    // A late refill is heard at once, and one takes a few hundredths of its 10.7 ms.
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    while (!closing) {
        OutputBuffer* buffer = returned_.pop();
        if (buffer != nullptr) {
            engine.renderBlock(buffer->samples.data(), kDeviceBufferFrames);
            countIfLate();
            write(*buffer);
        } else {
            WaitForSingleObject(wake_, INFINITE);
        }
    }
}

// The result of the write is not looked at: a device that refuses a buffer has stopped for good.
void WaveOut::write(OutputBuffer& buffer) const noexcept {
    buffer.withDevice = true;
    waveOutWrite(device, &buffer.header, sizeof(WAVEHDR));
}

// Before a write: with no buffer left at the device there is a gap in the sound.
void WaveOut::countIfLate() noexcept {
    if (std::none_of(buffers.begin(), buffers.end(),
                     [](const OutputBuffer& buffer) { return buffer.withDevice.load(); })) {
        ++lateBuffers;
    }
}

void WaveOut::closeDevice() {
    closing = true;
    // From the join on no buffer is written, so the completions of the reset find nobody.
    if (refill_.joinable()) {
        SetEvent(wake_);
        refill_.join();
    }
    waveOutReset(device);
    for (OutputBuffer& buffer : buffers) {
        if ((buffer.header.dwFlags & WHDR_PREPARED) != 0) {
            waveOutUnprepareHeader(device, &buffer.header, sizeof(WAVEHDR));
        }
    }
    waveOutClose(device);
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
    for (OutputBuffer& buffer : out->buffers) {
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
