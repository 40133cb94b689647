// SPDX-License-Identifier: MIT
// The MIDI inputs of the fake winmm.dll. A test defines the ports and sends messages through files
// that it writes while the program runs.
//
// Environment variables, all with the prefix PERCUSSOMATIC_TEST_:
//   MIDI_PORTS      the port names, UTF-8, one per line. A prefix "!caps ", "!open " or "!start "
//                   makes that call fail. Read on every query: rewriting the file connects and
//                   disconnects ports.
//   MIDI_SCRIPT     the messages to send, lines "DELAY_US PACKED": the delay counts from the
//                   previous message, or from now if that is in the past; PACKED is a short
//                   message with its first byte lowest. Tests append to the file; what it contains
//                   when the program starts is ignored.
//   MIDI_DELIVERED  the log, appended to: per message "played NS" with the performance counter, or
//                   "lost NS" if no port was started
//
// One port can be open at a time; it receives all messages.
//
// Threads: any. A thread of its own sends the messages, from the program's start to its end.

#define _WINMM_ // NOLINT(bugprone-reserved-identifier): declares the functions without dllimport

#include "fake_winmm.h"

#include <windows.h>

#include <mmsystem.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <deque>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace {

using namespace fake_winmm;

using Callback = void(CALLBACK*)(HMIDIIN, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);
using DelayExecution = LONG(NTAPI*)(BOOLEAN alertable, const LARGE_INTEGER* interval);

struct Port {
    std::wstring name;
    std::string fault; // "!caps ", "!open ", "!start " or empty
};

struct OpenPort {
    // Held during MIM_DATA, so no message arrives after midiInStop has returned.
    SRWLOCK lock = SRWLOCK_INIT;
    bool started = false; // guarded by lock; nothing below changes while it is true
    bool open = false;
    Port port;
    Callback callback = nullptr;
    DWORD_PTR instance = 0;
    std::int64_t startedNs = 0;
};

OpenPort thePort;
const auto kHandle = std::bit_cast<HMIDIIN>(&thePort);

std::vector<Port> readPorts() {
    std::vector<Port> ports;
    std::ifstream file(setting("MIDI_PORTS"), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        const std::size_t start = line.starts_with('!') ? line.find(' ') + 1 : 0;
        wchar_t name[256] = {};
        MultiByteToWideChar(CP_UTF8, 0, &line[start], -1, name, static_cast<int>(std::size(name)));
        ports.push_back({name, line.substr(0, start)});
    }
    return ports;
}

struct Message {
    std::int64_t dueNs = 0;
    DWORD_PTR packed = 0;
};

// Reads MIDI_SCRIPT incrementally. Sender thread only.
class Script {
public:
    // Starts at the end: the existing content belongs to an earlier run.
    Script() : file_(setting("MIDI_SCRIPT"), std::ios::binary) { file_.seekg(0, std::ios::end); }

    void readAppendedLines() {
        file_.clear();
        file_.seekg(0, std::ios::cur); // discards the buffered end of file
        unread_.append(std::istreambuf_iterator<char>(file_), {});
        const std::size_t end = unread_.rfind('\n') + 1; // the last line may be incomplete
        std::istringstream lines(unread_.substr(0, end));
        unread_.erase(0, end);
        DWORD_PTR packed = 0;
        for (std::int64_t delayUs = 0; lines >> delayUs >> packed;) {
            lastDueNs_ = std::max(lastDueNs_, counterNs()) + delayUs * kNsPerUs;
            pending_.push_back({lastDueNs_, packed});
        }
    }

    std::deque<Message>& pending() { return pending_; }

private:
    std::ifstream file_;
    std::string unread_;
    std::deque<Message> pending_;
    std::int64_t lastDueNs_ = 0;
};

bool deliver(const Message& message) {
    const Lock lock(thePort.lock);
    if (thePort.started) {
        const std::int64_t sinceStartMs = (counterNs() - thePort.startedNs) / kNsPerMs;
        thePort.callback(kHandle, MIM_DATA, thePort.instance, message.packed,
                         static_cast<DWORD_PTR>(sinceStartMs));
    }
    return thePort.started;
}

DWORD WINAPI sendMessages(void* /*unused*/) {
    constexpr std::int64_t kPollNs = 5 * kNsPerMs; // interval between reads of the script
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    // Unlike Sleep, it has a resolution of 100 ns.
    const auto delayExecution = std::bit_cast<DelayExecution>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtDelayExecution"));
    Script script;
    std::ofstream log(setting("MIDI_DELIVERED"), std::ios::binary | std::ios::app);
    for (;;) {
        script.readAppendedLines();
        const std::int64_t pollNs = counterNs() + kPollNs;
        std::deque<Message>& pending = script.pending();
        for (; !pending.empty() && pending.front().dueNs <= counterNs(); pending.pop_front()) {
            const std::int64_t nowNs = counterNs();
            log << (deliver(pending.front()) ? "played " : "lost ") << nowNs << std::endl;
        }
        const std::int64_t wakeNs =
            pending.empty() ? pollNs : std::min(pollNs, pending.front().dueNs);
        LARGE_INTEGER interval;
        interval.QuadPart = std::min<std::int64_t>(0, (counterNs() - wakeNs) / 100);
        delayExecution(0, &interval);
    }
}

MMRESULT stopInput() {
    const Lock lock(thePort.lock);
    thePort.started = false;
    return MMSYSERR_NOERROR;
}

} // namespace

void fake_winmm::startMidiSender() {
    if (!setting("MIDI_SCRIPT").empty()) {
        CloseHandle(CreateThread(nullptr, 0, sendMessages, nullptr, 0, nullptr));
    }
}

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): names differ from the SDK's

UINT WINAPI midiInGetNumDevs() {
    return static_cast<UINT>(readPorts().size());
}

MMRESULT WINAPI midiInGetDevCapsW(UINT_PTR id, LPMIDIINCAPSW caps, UINT size) {
    const std::vector<Port> ports = readPorts();
    if (id >= ports.size()) {
        return MMSYSERR_BADDEVICEID;
    }
    if (ports[id].fault == "!caps ") {
        return MMSYSERR_NODRIVER;
    }
    MIDIINCAPSW found{};
    found.vDriverVersion = 0x0100;
    ports[id].name.copy(found.szPname, std::size(found.szPname) - 1);
    std::memcpy(caps, &found, std::min<std::size_t>(size, sizeof(found)));
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI midiInOpen(LPHMIDIIN device, UINT id, DWORD_PTR callback, DWORD_PTR instance,
                           DWORD /*flags*/) {
    const std::vector<Port> ports = readPorts();
    if (id >= ports.size()) {
        return MMSYSERR_BADDEVICEID;
    }
    if (thePort.open || ports[id].fault == "!open ") {
        return MMSYSERR_ALLOCATED;
    }
    thePort.open = true;
    thePort.port = ports[id];
    thePort.callback = std::bit_cast<Callback>(callback);
    thePort.instance = instance;
    *device = kHandle;
    thePort.callback(kHandle, MIM_OPEN, instance, 0, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI midiInStart(HMIDIIN /*device*/) {
    const Lock lock(thePort.lock);
    thePort.started = thePort.port.fault != "!start ";
    thePort.startedNs = counterNs();
    return thePort.started ? MMSYSERR_NOERROR : MMSYSERR_ERROR;
}

MMRESULT WINAPI midiInStop(HMIDIIN /*device*/) {
    return stopInput();
}

// No buffers are ever queued, so there are none to return.
MMRESULT WINAPI midiInReset(HMIDIIN /*device*/) {
    hangIfRequested("midiInReset");
    return stopInput();
}

MMRESULT WINAPI midiInClose(HMIDIIN /*device*/) {
    stopInput();
    thePort.open = false;
    thePort.callback(kHandle, MIM_CLOSE, thePort.instance, 0, 0);
    return MMSYSERR_NOERROR;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
