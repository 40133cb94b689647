#include "wave_device.h"

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

using wave_device::Block;
using wave_device::Script;

using Callback = void(CALLBACK*)(HWAVEOUT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);

struct Event {
    bool signalled = false; // guarded by eventMutex
};

std::mutex eventMutex;
std::condition_variable eventChanged;
// Of the one thread that waits; all guarded by eventMutex.
DWORD waitMs = 0; // 0 while none does
bool timeIsUp = false;

} // namespace

struct WaveOutDevice {
    explicit WaveOutDevice(const Script& wanted) : script(wanted) {}

    void checkLocked(bool fine, const char* fault) {
        state.faults += fine ? "" : std::string(fault) + '\n';
    }

    std::mutex mutex;
    std::condition_variable changed;
    // All guarded by mutex.
    Script script;
    wave_device::State state;
    bool resetting = false;
    int prepares = 0, prepared = 0;
    Callback callback = nullptr;
    DWORD_PTR instance = 0;
    std::deque<Block> queue;
    std::thread returning; // the opening thread's
};

namespace {

std::unique_ptr<WaveOutDevice> theDevice;
thread_local bool insideCallback = false;

// For a call of the program.
std::unique_lock<std::mutex> lockCalled(WaveOutDevice& device) {
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

// Takes the oldest buffer out of the queue and hands it to the callback, with the mutex free.
void returnOldest(WaveOutDevice& device, std::unique_lock<std::mutex>& lock) {
    const Block block = std::move(device.queue.front());
    device.queue.pop_front();
    device.checkLocked(samplesOf(*block.header) == block.samples, "touched while queued");
    block.header->dwFlags = (block.header->dwFlags & ~WHDR_INQUEUE) | WHDR_DONE;
    lock.unlock();
    insideCallback = true;
    device.callback(&device, WOM_DONE, device.instance, reinterpret_cast<DWORD_PTR>(block.header),
                    0);
    insideCallback = false;
    lock.lock();
}

void returnAll(WaveOutDevice& device) {
    std::unique_lock lock(device.mutex);
    while (device.state.open) {
        if (device.queue.empty()) {
            device.changed.wait(lock);
        } else {
            returnOldest(device, lock);
        }
    }
}

} // namespace

namespace wave_device {

void begin(const Script& script) {
    theDevice = std::make_unique<WaveOutDevice>(script);
}

void follow(const Script& script) {
    const std::lock_guard lock(theDevice->mutex);
    theDevice->script = script;
    theDevice->prepares = 0;
}

State state() {
    const std::lock_guard lock(theDevice->mutex);
    return theDevice->state;
}

bool waitForWrites(int count) {
    std::unique_lock lock(theDevice->mutex);
    return theDevice->changed.wait_for(lock, std::chrono::seconds(10),
                                       [count] { return theDevice->state.writes >= count; });
}

void returnBuffer() {
    std::unique_lock lock(theDevice->mutex);
    returnOldest(*theDevice, lock);
}

DWORD awaitedMs() {
    std::unique_lock lock(eventMutex);
    eventChanged.wait_for(lock, std::chrono::seconds(10), [] { return waitMs != 0; });
    return waitMs;
}

void passTime() {
    const std::lock_guard lock(eventMutex);
    waitMs = 0;
    timeIsUp = true;
    eventChanged.notify_all();
}

} // namespace wave_device

MMRESULT waveOutOpen(HWAVEOUT* device, UINT id, const WAVEFORMATEX* /*format*/, DWORD_PTR callback,
                     DWORD_PTR instance, DWORD flags) {
    const std::lock_guard lock(theDevice->mutex);
    theDevice->checkLocked(!theDevice->state.open, "opened twice");
    theDevice->checkLocked(id == WAVE_MAPPER && flags == CALLBACK_FUNCTION,
                           "opened in another way");
    if (theDevice->script.openResult != MMSYSERR_NOERROR) {
        return theDevice->script.openResult;
    }
    theDevice->state.open = true;
    theDevice->resetting = false;
    ++theDevice->state.opens;
    theDevice->callback = std::bit_cast<Callback>(callback);
    theDevice->instance = instance;
    if (theDevice->script.returnsByItself) {
        theDevice->returning = std::thread([] { returnAll(*theDevice); });
    }
    *device = theDevice.get();
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutPrepareHeader(HWAVEOUT device, WAVEHDR* header, UINT size) {
    const auto lock = lockCalled(*device);
    device->checkLocked(size == sizeof(WAVEHDR) && header->dwFlags == 0, "prepared a used header");
    if (++device->prepares == device->script.failingPrepare) {
        return MMSYSERR_ERROR;
    }
    ++device->prepared;
    header->dwFlags = WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutUnprepareHeader(HWAVEOUT device, WAVEHDR* header, UINT /*size*/) {
    const auto lock = lockCalled(*device);
    if (device->script.clings) {
        return MMSYSERR_ERROR;
    }
    device->checkLocked((header->dwFlags & WHDR_INQUEUE) == 0, "unprepared while queued");
    --device->prepared;
    header->dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutWrite(HWAVEOUT device, WAVEHDR* header, UINT /*size*/) {
    const auto lock = lockCalled(*device);
    device->checkLocked(!device->resetting, "written after the reset");
    device->checkLocked((header->dwFlags & WHDR_PREPARED) != 0, "written unprepared");
    device->checkLocked((header->dwFlags & WHDR_INQUEUE) == 0, "written while queued");
    header->dwFlags = (header->dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
    device->queue.push_back({header, samplesOf(*header)});
    if (!device->script.returnsByItself) {
        device->state.written.push_back(device->queue.back());
    }
    ++device->state.writes;
    device->changed.notify_all();
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutReset(HWAVEOUT device) {
    auto lock = lockCalled(*device);
    device->resetting = true;
    while (!device->queue.empty() && !device->script.clings) {
        returnOldest(*device, lock);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutClose(HWAVEOUT device) {
    {
        const auto lock = lockCalled(*device);
        device->state.open = false; // the next opening is of another device
        if (device->script.clings) {
            device->prepared = 0;
            return MMSYSERR_ERROR;
        }
        device->checkLocked(device->prepared == 0, "closed with prepared headers");
        device->checkLocked(device->queue.empty(), "closed with queued buffers");
    }
    device->changed.notify_all();
    if (device->returning.joinable()) {
        device->returning.join();
    }
    return MMSYSERR_NOERROR;
}

HANDLE CreateEventW(void* /*security*/, BOOL /*manualReset*/, BOOL /*signalled*/,
                    const wchar_t* /*name*/) {
    return std::make_unique<Event>().release();
}

BOOL SetEvent(HANDLE event) {
    const std::lock_guard lock(eventMutex);
    static_cast<Event*>(event)->signalled = true;
    waitMs = 0;
    eventChanged.notify_all();
    return TRUE;
}

BOOL ResetEvent(HANDLE event) {
    const std::lock_guard lock(eventMutex);
    static_cast<Event*>(event)->signalled = false;
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE event, DWORD milliseconds) {
    auto* awaited = static_cast<Event*>(event);
    std::unique_lock lock(eventMutex);
    if (!awaited->signalled) {
        waitMs = milliseconds;
        timeIsUp = false;
        eventChanged.notify_all();
        eventChanged.wait(lock, [awaited] { return awaited->signalled || timeIsUp; });
        waitMs = 0;
    }
    return std::exchange(awaited->signalled, false) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

BOOL CloseHandle(HANDLE event) {
    const std::unique_ptr<Event> closed(static_cast<Event*>(event));
    return TRUE;
}

HANDLE GetCurrentThread() {
    return nullptr;
}

BOOL SetThreadPriority(HANDLE /*thread*/, int /*priority*/) {
    return TRUE;
}
