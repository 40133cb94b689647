// SPDX-License-Identifier: MIT
#include "win32/audio/wave_out.h"

#include "system_time.h"

#include <algorithm>
#include <bit>
#include <system_error>
#include <vector>

namespace percussomatic {

namespace {

constexpr WORD kChannels = 2;
constexpr WORD kBitsPerSample = 16;
constexpr WORD kFrameBytes = kChannels * kBitsPerSample / 8;

constexpr DWORD kCompletionTimeoutMs = 2000; // then the device counts as lost
constexpr DWORD kMinRetryDelayMs = 500, kMaxRetryDelayMs = 10000;

// A device that returns buffers unplayed would keep the refill thread busy at the highest priority.
// The check spans more sound than a device takes in advance, at its start or after a stall, and
// four times the normal speed is more than any clock error.
constexpr std::uint32_t kTimedRefills = 256;
constexpr std::int64_t kSoundNs =
    std::int64_t{kTimedRefills} * kDeviceBufferFrames * 1'000'000'000 / kDeviceRateHz; // 2.7 s
constexpr std::int64_t kMinDurationNs = kSoundNs / 4;

// Keeps, until the process ends, buffers that a device could not be made to release: the driver may
// still use them. They stay reachable, so that leak checkers know them.
void abandon(std::unique_ptr<OutputBuffers> buffers) {
    static auto& abandoned = *new std::vector<std::unique_ptr<OutputBuffers>>;
    abandoned.push_back(std::move(buffers));
}

} // namespace

WaveOut::WaveOut(SoundEngine& soundEngine)
    : engine(soundEngine), allocated_(std::make_unique<OutputBuffers>()),
      wakeEvent_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    buffers = allocated_.get();
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
    searchRequested_ = false;
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
    closing = true;
    if (refillThread_.joinable()) {
        stopRequested_ = true;
        SetEvent(wakeEvent_);
        refillThread_.join();
    }
    closeDevice();
}

void WaveOut::deviceListChanged() noexcept {
    if (device == nullptr) {
        searchRequested_ = true;
        SetEvent(wakeEvent_);
    }
}

bool WaveOut::open() {
    engine.prepareForDevice();
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
        buffer.header = {};
        buffer.header.lpData = reinterpret_cast<LPSTR>(buffer.samples.data());
        buffer.header.dwBufferLength = sizeof(buffer.samples);
    }
    oldestBuffer_ = 0;
    streamClock_ = {};
    refillsTimed_ = 0;
    timingStartNs_ = counterNs();
    return std::all_of(all.begin(), all.end(), [this](OutputBuffer& buffer) {
        if (waveOutPrepareHeader(device, &buffer.header, sizeof(WAVEHDR)) != MMSYSERR_NOERROR) {
            return false;
        }
        engine.renderBlock(buffer.samples.data(), kDeviceBufferFrames);
        return write(buffer);
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
            refillUntilLost();
        } else {
            retryDevice();
        }
    }
}

// Returns when the device is lost and closed, or on stop.
void WaveOut::refillUntilLost() noexcept {
    while (!stopRequested_) {
        OutputBuffer& buffer = (*buffers)[oldestBuffer_];
        const bool works = buffer.queuedOn == nullptr ? refill(buffer) : waitForCompletion();
        if (!works) {
            closeDevice();
            return;
        }
    }
}

bool WaveOut::refill(OutputBuffer& buffer) noexcept {
    if (const auto position = nextBlock(streamClock_, counterNs(), kDeviceBufferFrames)) {
        engine.renderTimedBlock(buffer.samples.data(), kDeviceBufferFrames, *position);
    } else {
        engine.renderBlock(buffer.samples.data(), kDeviceBufferFrames);
    }
    countUnderrun();
    oldestBuffer_ = (oldestBuffer_ + 1) % kOutputBufferCount;
    return write(buffer) && keepsTime();
}

bool WaveOut::waitForCompletion() noexcept {
    return WaitForSingleObject(wakeEvent_, kCompletionTimeoutMs) != WAIT_TIMEOUT;
}

// Call after each refill. Resets the retry delay here and not on open: a dead device may open and
// accept buffers as well.
bool WaveOut::keepsTime() noexcept {
    if (++refillsTimed_ < kTimedRefills) {
        return true;
    }
    const std::int64_t nowNs = counterNs();
    if (nowNs - timingStartNs_ < kMinDurationNs) {
        return false;
    }
    refillsTimed_ = 0;
    timingStartNs_ = nowNs;
    retryDelayMs_ = kMinRetryDelayMs;
    return true;
}

void WaveOut::retryDevice() noexcept {
    ResetEvent(wakeEvent_); // may still be signalled by a completion
    // The flags are set before the event, so a request that was just reset is seen here.
    if (!stopRequested_ && !searchRequested_) {
        WaitForSingleObject(wakeEvent_, retryDelayMs_);
    }
    if (!stopRequested_) {
        const bool requested = searchRequested_.exchange(false);
        retryDelayMs_ =
            requested ? kMinRetryDelayMs : std::min(2 * retryDelayMs_, kMaxRetryDelayMs);
        engine.deactivateAllVoices(); // or everything triggered meanwhile would sound together
        open();
    }
}

bool WaveOut::write(OutputBuffer& buffer) const noexcept {
    buffer.queuedOn = device.load();
    return waveOutWrite(device, &buffer.header, sizeof(WAVEHDR)) == MMSYSERR_NOERROR;
}

// Call before a write: if the device has no queued buffer left, there is a gap in the sound.
void WaveOut::countUnderrun() noexcept {
    const OutputBuffers& all = *buffers;
    if (std::none_of(all.begin(), all.end(),
                     [](const OutputBuffer& buffer) { return buffer.queuedOn != nullptr; })) {
        ++lateBuffers;
    }
}

// Only sets `closing` without a device.
void WaveOut::closeDevice() noexcept {
    closing = true; // drops the completions that the reset causes
    if (device == nullptr) {
        return;
    }
    waveOutReset(device);
    for (OutputBuffer& buffer : *buffers) {
        buffer.queuedOn = nullptr; // a dead device may never have completed it
        if ((buffer.header.dwFlags & WHDR_PREPARED) != 0) {
            waveOutUnprepareHeader(device, &buffer.header, sizeof(WAVEHDR));
        }
    }
    if (waveOutClose(device) != MMSYSERR_NOERROR) {
        abandon(std::move(allocated_));
        allocated_ = std::make_unique<OutputBuffers>();
        buffers = allocated_.get();
    }
    device = nullptr;
    engine.deactivateAllVoices();
}

void CALLBACK WaveOut::onDeviceCallback(HWAVEOUT device, UINT message, DWORD_PTR instance,
                                        DWORD_PTR firstParameter, DWORD_PTR /*secondParameter*/) {
    auto* out = std::bit_cast<WaveOut*>(instance);
    const auto* header = std::bit_cast<const WAVEHDR*>(firstParameter);
    if (message != WOM_DONE || out == nullptr || header == nullptr || out->closing) {
        return;
    }
    for (OutputBuffer& buffer : *out->buffers) {
        // A thread that was held up may deliver the completion of an earlier device, whose buffer
        // the current one is playing by now.
        HWAVEOUT completedOn = device;
        if (&buffer.header == header &&
            buffer.queuedOn.compare_exchange_strong(completedOn, nullptr)) {
            SetEvent(out->wakeEvent_); // one of the few calls that winmm allows here
        }
    }
}

WaveOut& waveOut() noexcept {
    // Never destroyed: a driver that could not be closed may call back while the program exits.
    static WaveOut& instance = *std::make_unique<WaveOut>(soundEngine()).release();
    return instance;
}

} // namespace percussomatic
