// SPDX-License-Identifier: MIT
#include "wave_device.h"

#include "system_time.h"

#include <atomic>
#include <bit>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace {

using wave_device::Behaviour;
using wave_device::Block;
using Callback = void(CALLBACK*)(HWAVEOUT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);

constexpr std::chrono::seconds kTestTimeout{10};

std::atomic<std::int64_t> nowNs = 0;

// The only event.
std::mutex eventMutex;
std::condition_variable eventChanged;
bool signalled = false; // guarded by eventMutex
DWORD timeoutMs = 0;    // guarded by eventMutex; of the only waiting thread, 0 if none waits
bool expired = false;   // guarded by eventMutex

} // namespace

struct WaveOutDevice {
    ~WaveOutDevice() {
        for (const Block& kept : queue) { // the driver's until the process ends
            kept.header->dwFlags |= WHDR_DONE;
        }
    }
    void checkLocked(bool valid, const char* violation) {
        state.violations += valid ? "" : std::string(violation) + '\n';
    }

    std::mutex mutex;
    std::condition_variable changed;
    // All guarded by mutex.
    Behaviour behaviour;
    wave_device::State state;
    bool resetting = false;
    int prepareCalls = 0, prepared = 0, writeCalls = 0;
    Callback callback = nullptr;
    DWORD_PTR instance = 0;
    std::deque<Block> queue;
    std::jthread completing; // used by the thread that opens and closes the device
};

namespace {

std::unique_ptr<WaveOutDevice> theDevice;
thread_local bool insideCallback = false;

std::unique_lock<std::mutex> lockForCall(WaveOutDevice& device) {
    std::unique_lock lock(device.mutex);
    device.checkLocked(device.state.open, "called while closed");
    device.checkLocked(!insideCallback, "called inside the callback");
    return lock;
}

std::vector<std::int16_t> samplesOf(const WAVEHDR& header) {
    std::vector<std::int16_t> samples(header.dwBufferLength / sizeof(std::int16_t));
    std::memcpy(samples.data(), header.lpData, header.dwBufferLength);
    return samples;
}

// Calls the callback with the mutex released.
void completeOldest(WaveOutDevice& device, std::unique_lock<std::mutex>& lock) {
    const Block block = std::move(device.queue.front());
    device.queue.pop_front();
    device.checkLocked(samplesOf(*block.header) == block.samples, "modified while queued");
    nowNs += device.behaviour.blockNs;
    block.header->dwFlags = (block.header->dwFlags & ~WHDR_INQUEUE) | WHDR_DONE;
    lock.unlock();
    insideCallback = true;
    device.callback(&device, WOM_DONE, device.instance, reinterpret_cast<DWORD_PTR>(block.header),
                    0);
    insideCallback = false;
    lock.lock();
}

void completeUntilClosed(WaveOutDevice& device) {
    std::unique_lock lock(device.mutex);
    const auto due = [&device] { return !device.state.open || !device.queue.empty(); };
    for (device.changed.wait(lock, due); device.state.open; device.changed.wait(lock, due)) {
        completeOldest(device, lock);
    }
}

} // namespace

std::int64_t percussomatic::counterNs() noexcept {
    return nowNs;
}

namespace wave_device {

void create(const Behaviour& behaviour) {
    theDevice = std::make_unique<WaveOutDevice>();
    theDevice->behaviour = behaviour;
}

void setBehaviour(const Behaviour& behaviour) {
    const std::lock_guard lock(theDevice->mutex);
    theDevice->behaviour = behaviour;
    theDevice->prepareCalls = 0;
    theDevice->writeCalls = 0;
}

State state() {
    const std::lock_guard lock(theDevice->mutex);
    return theDevice->state;
}

bool waitForWrites(int count) {
    std::unique_lock lock(theDevice->mutex);
    return theDevice->changed.wait_for(lock, kTestTimeout,
                                       [count] { return theDevice->state.writes >= count; });
}

void completeOldest() {
    std::unique_lock lock(theDevice->mutex);
    ::completeOldest(*theDevice, lock);
}

DWORD pendingTimeoutMs() {
    std::unique_lock lock(eventMutex);
    eventChanged.wait_for(lock, kTestTimeout, [] { return timeoutMs != 0; });
    return timeoutMs;
}

void expireTimeout() {
    const std::lock_guard lock(eventMutex);
    timeoutMs = 0;
    expired = true;
    eventChanged.notify_all();
}

} // namespace wave_device

MMRESULT waveOutOpen(HWAVEOUT* device, UINT id, const WAVEFORMATEX* /*format*/, DWORD_PTR callback,
                     DWORD_PTR instance, DWORD flags) {
    WaveOutDevice& fake = *theDevice;
    const std::lock_guard lock(fake.mutex);
    fake.checkLocked(!fake.state.open, "opened twice");
    fake.checkLocked(id == WAVE_MAPPER && flags == CALLBACK_FUNCTION, "wrong device or flags");
    if (fake.behaviour.openResult == MMSYSERR_NOERROR) {
        fake.state.open = true;
        fake.resetting = false;
        ++fake.state.opens;
        fake.callback = std::bit_cast<Callback>(callback);
        fake.instance = instance;
        if (fake.behaviour.autoComplete) {
            fake.completing = std::jthread([&fake] { completeUntilClosed(fake); });
        }
        *device = &fake;
    }
    return fake.behaviour.openResult;
}

MMRESULT waveOutPrepareHeader(HWAVEOUT device, WAVEHDR* header, UINT size) {
    const auto lock = lockForCall(*device);
    device->checkLocked(size == sizeof(WAVEHDR) && header->dwFlags == 0, "prepared a used header");
    if (++device->prepareCalls == device->behaviour.failingPrepare) {
        return MMSYSERR_ERROR;
    }
    ++device->prepared;
    header->dwFlags = WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutUnprepareHeader(HWAVEOUT device, WAVEHDR* header, UINT /*size*/) {
    const auto lock = lockForCall(*device);
    if (device->behaviour.keepsBuffers) {
        return MMSYSERR_ERROR;
    }
    device->checkLocked((header->dwFlags & WHDR_INQUEUE) == 0, "unprepared while queued");
    --device->prepared;
    header->dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutWrite(HWAVEOUT device, WAVEHDR* header, UINT /*size*/) {
    const auto lock = lockForCall(*device);
    device->checkLocked(!device->resetting, "written after the reset");
    device->checkLocked((header->dwFlags & WHDR_PREPARED) != 0, "written unprepared");
    device->checkLocked((header->dwFlags & WHDR_INQUEUE) == 0, "written while queued");
    if (++device->writeCalls == device->behaviour.failingWrite) {
        return MMSYSERR_ERROR;
    }
    header->dwFlags = (header->dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
    device->queue.push_back({header, samplesOf(*header)});
    if (!device->behaviour.autoComplete) {
        device->state.written.push_back(device->queue.back());
    }
    ++device->state.writes;
    device->changed.notify_all();
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutReset(HWAVEOUT device) {
    auto lock = lockForCall(*device);
    device->resetting = true;
    while (!device->queue.empty() && !device->behaviour.keepsBuffers) {
        completeOldest(*device, lock);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutClose(HWAVEOUT device) {
    SetEvent(nullptr); // as a completion just before this call may have done
    auto lock = lockForCall(*device);
    device->state.open = false; // even if close fails: the next open is of another device
    if (device->behaviour.keepsBuffers) {
        device->prepared = 0;
        return MMSYSERR_ERROR;
    }
    device->checkLocked(device->prepared == 0, "closed with prepared headers");
    device->checkLocked(device->queue.empty(), "closed with queued buffers");
    lock.unlock();
    device->changed.notify_all();
    device->completing = {}; // joins
    return MMSYSERR_NOERROR;
}

HANDLE CreateEventW(void* /*security*/, BOOL /*manualReset*/, BOOL /*signalled*/,
                    const wchar_t* /*name*/) {
    return &signalled;
}

BOOL SetEvent(HANDLE /*event*/) {
    const std::lock_guard lock(eventMutex);
    signalled = true;
    timeoutMs = 0;
    eventChanged.notify_all();
    return TRUE;
}

BOOL ResetEvent(HANDLE /*event*/) {
    const std::lock_guard lock(eventMutex);
    signalled = false;
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE /*event*/, DWORD milliseconds) {
    std::unique_lock lock(eventMutex);
    if (!signalled) {
        timeoutMs = milliseconds;
        expired = false;
        eventChanged.notify_all();
        eventChanged.wait(lock, [] { return signalled || expired; });
        timeoutMs = 0;
    }
    return std::exchange(signalled, false) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}
