// SPDX-License-Identifier: MIT
#pragma once

#include "audio/sound_engine.h"

#include <windows.h>

#include <mmsystem.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace percussomatic {

constexpr std::size_t kOutputBufferCount = 4; // 2048 frames in flight, 42.7 ms

struct OutputBuffer {
    WAVEHDR header{};
    std::array<std::int16_t, std::size_t{kDeviceBufferFrames} * 2> samples{}; // left, right
    std::atomic<bool> queued = false; // set before the write, cleared by the completion
};

using OutputBuffers = std::array<OutputBuffer, kOutputBufferCount>;

// Lock-free queue of completed buffers that wait for their refill. Each buffer is in it at most
// once, so it never overflows.
class CompletedQueue {
public:
    void push(OutputBuffer& buffer) noexcept; // any thread
    OutputBuffer* pop() noexcept;             // one thread at a time; null if empty
    void clear() noexcept;                    // not concurrently with push or pop

private:
    std::array<std::atomic<OutputBuffer*>, kOutputBufferCount> slots_{};
    std::atomic<std::size_t> pushed_ = 0;
    std::size_t popped_ = 0;
};

// The default wave-out device, 16-bit stereo at 48 kHz, and its four buffers. While there is no
// device, the program runs silently and retries.
//
// winmm forbids most calls inside the completion callback, so the callback only queues the
// completed buffer and wakes the refill thread, which renders into it and writes it again. No lock
// is held across a call of winmm: waveOutReset delivers completions before it returns, on the
// calling thread.
//
// If the device completes no buffer for two seconds (an unplugged headset, a restarted sound
// service), the refill thread closes it and tries to open the default device: first after half a
// second, then at doubling intervals of up to ten seconds. Voices triggered in between are
// discarded.
//
// The buffers outlive the device and the wake event lives as long as the record, so a completion
// that a driver delivers too late does no harm.
//
// Threads: start and stop on the GUI thread; the callback on any thread of the system.
struct WaveOut {
    explicit WaveOut(SoundEngine& soundEngine);
    ~WaveOut();
    WaveOut(const WaveOut&) = delete;
    WaveOut& operator=(const WaveOut&) = delete;

    // Opens the device, after closing it if it is open, and starts the refill thread. False if
    // there is no device yet.
    bool start();

    // Joins the refill thread, which waits for a pending call of winmm, and closes the device. Ends
    // all voices if a device was open.
    void stop();

    // `instance` is the WaveOut, `firstParameter` the completed WAVEHDR.
    static void CALLBACK onDeviceCallback(HWAVEOUT device, UINT message, DWORD_PTR instance,
                                          DWORD_PTR firstParameter, DWORD_PTR secondParameter);

    SoundEngine& engine;
    std::atomic<HWAVEOUT> device = nullptr;        // null while no device is open
    std::atomic<OutputBuffers*> buffers = nullptr; // changes only while `closing` is set
    std::atomic<std::uint32_t> lateBuffers = 0;    // underruns since the start of the program
    std::atomic<bool> closing = false;             // ignores completions, until the next open

private:
    bool open();
    bool openDevice();
    bool queueBuffers();
    bool startRefillThread() noexcept;
    void runRefillThread() noexcept;
    void refillUntilTimeout() noexcept;
    void retryDevice() noexcept;
    void write(OutputBuffer& buffer) const noexcept;
    void countUnderrun() noexcept;
    void closeDevice() noexcept;

    std::vector<std::unique_ptr<OutputBuffers>> allocated_; // the last set is in use
    CompletedQueue completed_;
    HANDLE wakeEvent_; // auto-reset: a buffer was completed, or stopRequested_ was set
    std::atomic<bool> stopRequested_ = false;
    DWORD retryDelayMs_ = 0;   // refill thread only, once that runs
    std::thread refillThread_; // GUI thread only; runs from start to stop
};

// The program's only device; it plays soundEngine().
WaveOut& waveOut() noexcept;

} // namespace percussomatic
