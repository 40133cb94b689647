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

// One buffer on its way round: rendered, with the device, returned.
struct OutputBuffer {
    WAVEHDR header{};
    std::array<std::int16_t, std::size_t{kDeviceBufferFrames} * 2> samples{}; // left, right
    std::atomic<bool> withDevice = false; // set before the write, cleared by the completion
};

using OutputBuffers = std::array<OutputBuffer, kOutputBufferCount>;

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
// instrument runs silently and looks for one.
//
// winmm forbids most calls inside the completion callback. So the callback only notes which buffer
// came back and wakes the refill, a thread of its own, which renders and writes it again. No lock
// is held across a call of winmm: waveOutReset delivers completions at once, on the thread that
// calls it.
//
// A device of which no buffer comes back for two seconds (an unplugged headset, a sound service
// that was restarted) is closed by the refill thread, which then tries the default device again, at
// first after half a second, later every ten. Whatever was struck in between is not heard
// afterwards.
//
// The buffers outlive the device and the wake event lives as long as the record, so a completion
// that a driver delivers too late finds memory that is still good.
//
// Threads: start and stop on the GUI thread; the callback on any thread of the system.
struct WaveOut {
    explicit WaveOut(SoundEngine& soundEngine);
    ~WaveOut();
    WaveOut(const WaveOut&) = delete;
    WaveOut& operator=(const WaveOut&) = delete;

    // False when there is no device yet; reopens one that is open.
    bool start();

    // Ends the refill, and all voices if a device was open. Waits for a call of winmm that the
    // refill is in.
    void stop();

    // The instance is the WaveOut, the first parameter the header that is done.
    static void CALLBACK onDeviceCallback(HWAVEOUT device, UINT message, DWORD_PTR instance,
                                          DWORD_PTR firstParameter, DWORD_PTR secondParameter);

    SoundEngine& engine;
    std::atomic<HWAVEOUT> device = nullptr;        // null also while one is looked for
    std::atomic<OutputBuffers*> buffers = nullptr; // changed only while completions are dropped
    std::atomic<std::uint32_t> lateBuffers = 0;    // since the start: the device had none left
    std::atomic<bool> closing = false; // completions are dropped; stays set until the next opening

private:
    bool open();
    bool openDevice();
    bool queueBuffers();
    bool startRefill() noexcept;
    void keepPlaying() noexcept;
    void refillReturned() noexcept;
    void lookForDevice() noexcept;
    void write(OutputBuffer& buffer) const noexcept;
    void countIfLate() noexcept;
    void closeDevice() noexcept;

    std::vector<std::unique_ptr<OutputBuffers>> made_; // the last is in use
    ReturnedBuffers returned_;
    HANDLE wake_;                      // auto-reset event: a buffer came back, or ending_ was set
    std::atomic<bool> ending_ = false; // tells the refill thread to end
    DWORD pauseMs_ = 0;                // before the device is tried again; the refill thread's
    std::thread refill_;               // GUI thread only; runs from start to stop
};

// The instrument's one device, playing the one engine.
WaveOut& waveOut() noexcept;

} // namespace percussomatic
