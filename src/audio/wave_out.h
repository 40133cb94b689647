#pragma once

#include "audio/sound_engine.h"

#include <windows.h>

#include <mmsystem.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>

namespace percussomatic {

constexpr std::size_t kOutputBufferCount = 4; // 2048 frames in flight, 42.7 ms

// One buffer on its way round: rendered, with the device, returned.
struct OutputBuffer {
    WAVEHDR header{};
    std::array<std::int16_t, std::size_t{kDeviceBufferFrames} * 2> samples{}; // left, right
    std::atomic<bool> withDevice = false; // set before the write, cleared by the completion
};

// The buffers that came back and wait for their refill, first in, first out. A buffer is in it once
// at most, so there is always room.
class ReturnedBuffers {
public:
    void push(OutputBuffer& buffer) noexcept; // any thread
    OutputBuffer* pop() noexcept;             // one thread at a time; null when there is none
    void clear() noexcept;                    // while nobody pushes or pops

private:
    std::array<std::atomic<OutputBuffer*>, kOutputBufferCount> slots_{};
    std::atomic<std::size_t> pushed_ = 0;
    std::size_t popped_ = 0;
};

// The default wave-out device, 16-bit stereo at 48 kHz, and its four buffers. Without a device the
// instrument runs silently.
//
// winmm forbids most calls inside the completion callback. So the callback only notes which buffer
// came back and wakes the refill, a thread of its own, which renders and writes it again. No lock
// is held across a call of winmm: waveOutReset delivers completions at once, on the thread that
// calls it.
//
// The buffers are part of the record and the wake event lives as long as it does, so a completion
// that a driver delivers too late finds memory that is still good.
//
// Threads: start and stop on the GUI thread; the callback on any thread of the system.
struct WaveOut {
    explicit WaveOut(SoundEngine& soundEngine);
    ~WaveOut();
    WaveOut(const WaveOut&) = delete;
    WaveOut& operator=(const WaveOut&) = delete;

    bool start(); // false without a device; reopens one that is open
    void stop();  // and ends all voices; nothing without a device

    // The instance is the WaveOut, the first parameter the header that is done.
    static void CALLBACK onDeviceCallback(HWAVEOUT device, UINT message, DWORD_PTR instance,
                                          DWORD_PTR firstParameter, DWORD_PTR secondParameter);

    SoundEngine& engine;
    HWAVEOUT device = nullptr; // written by the GUI thread while there is no refill thread
    std::array<OutputBuffer, kOutputBufferCount> buffers;
    std::atomic<std::uint32_t> lateBuffers = 0; // since the start: the device had none left
    std::atomic<bool> closing = false; // completions are dropped; stays set until the next start

private:
    bool openDevice();
    bool queueBuffers();
    bool startRefill() noexcept;
    void refillReturned() noexcept;
    void write(OutputBuffer& buffer) const noexcept;
    void countIfLate() noexcept;
    void closeDevice();

    ReturnedBuffers returned_;
    HANDLE wake_;        // auto-reset event: a buffer came back, or closing was set
    std::thread refill_; // GUI thread only; runs while the device is open
};

// The instrument's one device, playing the one engine.
WaveOut& waveOut() noexcept;

} // namespace percussomatic
