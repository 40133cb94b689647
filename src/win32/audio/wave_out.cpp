// SPDX-License-Identifier: MIT
#include "win32/audio/wave_out.h"

#include <algorithm>
#include <bit>
#include <system_error>

namespace percussomatic {

namespace {

constexpr WORD kChannels = 2;
constexpr WORD kBitsPerSample = 16;
constexpr WORD kFrameBytes = kChannels * kBitsPerSample / 8;

constexpr DWORD kCompletionTimeoutMs = 2000; // then the device counts as lost
constexpr DWORD kMinRetryDelayMs = 500, kMaxRetryDelayMs = 10000;

} // namespace

void CompletedQueue::push(OutputBuffer& buffer) noexcept {
    slots_[pushed_.fetch_add(1) % slots_.size()] = &buffer;
}

OutputBuffer* CompletedQueue::pop() noexcept {
    OutputBuffer* buffer = slots_[popped_ % slots_.size()].exchange(nullptr);
    if (buffer != nullptr) {
        ++popped_;
    }
    return buffer;
}

void CompletedQueue::clear() noexcept {
    for (auto& slot : slots_) {
        slot = nullptr;
    }
    pushed_ = 0;
    popped_ = 0;
}

WaveOut::WaveOut(SoundEngine& soundEngine)
    : engine(soundEngine), wakeEvent_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    allocated_.push_back(std::make_unique<OutputBuffers>());
    buffers = allocated_.back().get();
}

WaveOut::~WaveOut() {
    stop();
    if (wakeEvent_ != nullptr) {
        CloseHandle(wakeEvent_);
    }
}

bool WaveOut::start() {
    stop();
    ResetEvent(wakeEvent_); // may still be signalled from the previous run
    stopRequested_ = false;
    retryDelayMs_ = kMinRetryDelayMs;
    const bool opened = open();
    // Only after open() has written the first blocks: two threads that render and write could write
    // blocks in the wrong order.
    if (wakeEvent_ == nullptr || !startRefillThread()) {
        closeDevice();
        return false;
    }
    return opened;
}

void WaveOut::stop() {
    if (refillThread_.joinable()) {
        stopRequested_ = true;
        SetEvent(wakeEvent_);
        refillThread_.join();
    }
    // No buffer is written from here on, so the completions of the reset are not refilled.
    closeDevice();
}

bool WaveOut::open() {
    engine.prepareForDevice();
    completed_.clear();
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

// Renders the first blocks instead of queueing silence, so that a voice triggered before the start
// sounds from the first frame.
bool WaveOut::queueBuffers() {
    OutputBuffers& all = *buffers;
    for (OutputBuffer& buffer : all) {
        buffer.samples.fill(0);
        buffer.queued = false;
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

bool WaveOut::startRefillThread() noexcept {
    try {
        refillThread_ = std::thread([this] { runRefillThread(); });
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void WaveOut::runRefillThread() noexcept {
    // A late refill is audible, and each takes only a few hundredths of its 10.7 ms.
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    while (!stopRequested_) {
        if (device != nullptr) {
            refillUntilTimeout();
        } else {
            retryDevice();
        }
    }
}

// Returns when the device is lost and closed, or on stop.
void WaveOut::refillUntilTimeout() noexcept {
    while (!stopRequested_) {
        if (OutputBuffer* buffer = completed_.pop(); buffer != nullptr) {
            engine.renderBlock(buffer->samples.data(), kDeviceBufferFrames);
            countUnderrun();
            write(*buffer);
            retryDelayMs_ = kMinRetryDelayMs; // not on open: a dead device may open as well
        } else if (WaitForSingleObject(wakeEvent_, kCompletionTimeoutMs) == WAIT_TIMEOUT) {
            closeDevice();
            return;
        }
    }
}

void WaveOut::retryDevice() noexcept {
    WaitForSingleObject(wakeEvent_, retryDelayMs_);
    if (!stopRequested_) {
        retryDelayMs_ = std::min(2 * retryDelayMs_, kMaxRetryDelayMs);
        engine.deactivateAllVoices(); // or everything triggered meanwhile would sound together
        open();
    }
}

// Ignores the result: a device that rejects buffers completes none and so runs into the timeout.
void WaveOut::write(OutputBuffer& buffer) const noexcept {
    buffer.queued = true;
    waveOutWrite(device, &buffer.header, sizeof(WAVEHDR));
}

// Call before a write: if the device has no queued buffer left, there is a gap in the sound.
void WaveOut::countUnderrun() noexcept {
    const OutputBuffers& all = *buffers;
    if (std::none_of(all.begin(), all.end(),
                     [](const OutputBuffer& buffer) { return buffer.queued.load(); })) {
        ++lateBuffers;
    }
}

// No-op without a device.
void WaveOut::closeDevice() noexcept {
    if (device == nullptr) {
        return;
    }
    closing = true;
    waveOutReset(device);
    for (OutputBuffer& buffer : *buffers) {
        buffer.queued = false; // a dead device may never have completed it
        if ((buffer.header.dwFlags & WHDR_PREPARED) != 0) {
            waveOutUnprepareHeader(device, &buffer.header, sizeof(WAVEHDR));
        }
    }
    if (waveOutClose(device) != MMSYSERR_NOERROR) {
        // The driver may still use the buffers, so they stay allocated until the program ends.
        allocated_.push_back(std::make_unique<OutputBuffers>());
        buffers = allocated_.back().get();
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
        if (&buffer.header == header && buffer.queued.exchange(false)) {
            out->completed_.push(buffer);
            SetEvent(out->wakeEvent_); // one of the few calls that winmm allows here
        }
    }
}

WaveOut& waveOut() noexcept {
    static WaveOut instance(soundEngine());
    return instance;
}

} // namespace percussomatic
