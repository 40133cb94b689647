// SPDX-License-Identifier: MIT
#pragma once

#include "audio/sound_engine.h"
#include "audio/stream_clock.h"

#include <windows.h>

#include <mmsystem.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>

namespace percussomatic {

constexpr std::size_t kOutputBufferCount = 4; // 2048 frames in flight, 42.7 ms

struct OutputBuffer {
    WAVEHDR header{};
    std::array<std::int16_t, std::size_t{kDeviceBufferFrames} * 2> samples{}; // left, right
    // The device that plays it: set before the write, cleared by that device's completion.
    std::atomic<HWAVEOUT> queuedOn = nullptr;
};

using OutputBuffers = std::array<OutputBuffer, kOutputBufferCount>;

// The default wave-out device, 16-bit stereo at 48 kHz, and its four buffers. While there is no
// device, the program runs silently and retries.
//
// winmm forbids most calls inside the completion callback, so the callback only marks the buffer as
// completed and wakes the refill thread. A device completes its buffers in the order of the writes,
// so the refill thread takes them in turn, renders into each and writes it again. No lock is held
// across a call of winmm: waveOutReset delivers completions before it returns, on the calling
// thread.
//
// A device counts as lost if it rejects a write, completes no buffer for two seconds (an unplugged
// headset, a restarted sound service) or returns buffers much faster than they can be played. The
// refill thread closes it and tries to open the default device: first after half a second, then at
// doubling intervals of up to ten seconds, and at once when the system's devices change. Voices
// triggered in between are discarded.
//
// The buffers outlive the device and the wake event lives as long as the record, so a completion
// that a driver delivers too late does no harm.
//
// Threads: start, stop and deviceListChanged on the GUI thread; the callback on any thread of the
// system.
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

    // Ends the wait for the next attempt to open a device. No-op while a device is open.
    void deviceListChanged() noexcept;

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
    void refillUntilLost() noexcept;
    bool refill(OutputBuffer& buffer) noexcept;
    bool waitForCompletion() noexcept;
    bool keepsTime() noexcept;
    void retryDevice() noexcept;
    bool write(OutputBuffer& buffer) const noexcept;
    void countUnderrun() noexcept;
    void closeDevice() noexcept;

    std::unique_ptr<OutputBuffers> allocated_; // what `buffers` points to
    HANDLE wakeEvent_; // auto-reset: a buffer was completed, or one of the two flags was set
    std::atomic<bool> stopRequested_ = false;
    std::atomic<bool> searchRequested_ = false; // by deviceListChanged, until the next attempt

    // Of the thread that opens the device, then of the refill thread.
    DWORD retryDelayMs_ = 0;
    std::size_t oldestBuffer_ = 0;   // in `buffers`: the next to be completed
    std::uint32_t refillsTimed_ = 0; // since timingStartNs_
    std::int64_t timingStartNs_ = 0; // counterNs()
    StreamClock streamClock_;

    std::thread refillThread_; // GUI thread only; runs from start to stop
};

// The program's only device; it plays soundEngine().
WaveOut& waveOut() noexcept;

} // namespace percussomatic
