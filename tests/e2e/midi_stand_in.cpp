// The MIDI inputs of the stand-in for winmm.dll. The ports and what is played on them come from
// files that a test writes while the program runs.
//
// Environment variables, all with the prefix PERCUSSOMATIC_TEST_:
//   MIDI_PORTS      the ports in UTF-8, a name per line. "!caps ", "!open " or "!start " before the
//                   name makes that call fail. Read at each question: to rewrite the file is to
//                   plug and unplug.
//   MIDI_SCRIPT     what is played: lines "DELAY_US PACKED", microseconds after the line before, or
//                   after now when that is over, and a short message, its first byte lowest. Tests
//                   append to it; what stands in it when the program starts is not played.
//   MIDI_DELIVERED  the journal, appended to: "played NS", the performance counter, per message, or
//                   "lost NS" when no port was listening
//
// One port can be open at a time; whatever is played comes from it.
//
// Threads: any. One of its own plays, from the program's start to its end.

#define _WINMM_ // NOLINT(bugprone-reserved-identifier): declares what follows without dllimport

#include "stand_in.h"

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

using namespace stand_in;

using Callback = void(CALLBACK*)(HMIDIIN, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);
using DelayExecution = LONG(NTAPI*)(BOOLEAN alertable, const LARGE_INTEGER* interval);

struct Port {
    std::wstring name;
    std::string fault; // "!caps ", "!open ", "!start " or empty
};

struct OpenPort {
    SRWLOCK lock = SRWLOCK_INIT;
    // All guarded by lock, which is held through MIM_DATA: once midiInStop has returned, nothing
    // arrives any more.
    bool open = false, started = false;
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
        Port port{std::wstring(line.size(), L'\0'),
                  line.substr(0, line.starts_with('!') ? line.find(' ') + 1 : 0)};
        line.erase(0, port.fault.size());
        port.name.resize(static_cast<std::size_t>(
            MultiByteToWideChar(CP_UTF8, 0, line.data(), static_cast<int>(line.size()),
                                port.name.data(), static_cast<int>(port.name.size()))));
        ports.push_back(port);
    }
    return ports;
}

struct Message {
    std::int64_t dueNs = 0;
    DWORD_PTR packed = 0;
};

// The script, read as it grows. Playing thread only.
class Script {
public:
    // What stands in the file so far was meant for an earlier run.
    Script() : file_(setting("MIDI_SCRIPT"), std::ios::binary) { file_.seekg(0, std::ios::end); }

    void readOn() {
        file_.clear();
        file_.seekg(0, std::ios::cur); // or the end that has been seen stays the end
        unread_.append(std::istreambuf_iterator<char>(file_), {});
        const std::size_t end = unread_.rfind('\n') + 1; // the next line may be half written
        std::istringstream lines(unread_.substr(0, end));
        unread_.erase(0, end);
        DWORD_PTR packed = 0;
        for (std::int64_t delayUs = 0; lines >> delayUs >> packed;) {
            lastDueNs_ = std::max(lastDueNs_, counterNs()) + delayUs * kNsPerUs;
            coming_.push_back({lastDueNs_, packed});
        }
    }

    std::deque<Message>& coming() { return coming_; }

private:
    std::ifstream file_;
    std::string unread_;
    std::deque<Message> coming_;
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

DWORD WINAPI play(void* /*nothing*/) {
    constexpr std::int64_t kLookNs = 5 * kNsPerMs; // between two looks at the script
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    // Unlike Sleep it counts in units of 100 ns.
    const auto delayExecution = std::bit_cast<DelayExecution>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtDelayExecution"));
    Script script;
    std::ofstream journal(setting("MIDI_DELIVERED"), std::ios::binary | std::ios::app);
    for (;;) {
        script.readOn();
        std::int64_t wakeNs = counterNs() + kLookNs;
        std::deque<Message>& coming = script.coming();
        for (; !coming.empty() && coming.front().dueNs <= counterNs(); coming.pop_front()) {
            const std::int64_t nowNs = counterNs();
            journal << (deliver(coming.front()) ? "played " : "lost ") << nowNs << std::endl;
        }
        if (!coming.empty()) {
            wakeNs = std::min(wakeNs, coming.front().dueNs);
        }
        if (const std::int64_t remainingNs = wakeNs - counterNs(); remainingNs > 0) {
            LARGE_INTEGER interval;
            interval.QuadPart = -(remainingNs / 100);
            delayExecution(0, &interval);
        }
    }
}

MMRESULT stopInput() {
    const Lock lock(thePort.lock);
    thePort.started = false;
    return MMSYSERR_NOERROR;
}

} // namespace

void stand_in::startMidiPlayer() {
    if (!setting("MIDI_SCRIPT").empty()) {
        CloseHandle(CreateThread(nullptr, 0, play, nullptr, 0, nullptr));
    }
}

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): our own names

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
    {
        const Lock lock(thePort.lock);
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
    }
    *device = kHandle;
    std::bit_cast<Callback>(callback)(kHandle, MIM_OPEN, instance, 0, 0);
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

// Nothing is ever queued that it would give back.
MMRESULT WINAPI midiInReset(HMIDIIN /*device*/) {
    hangIn("midiInReset");
    return stopInput();
}

MMRESULT WINAPI midiInClose(HMIDIIN /*device*/) {
    stopInput();
    thePort.open = false;
    thePort.callback(kHandle, MIM_CLOSE, thePort.instance, 0, 0);
    return MMSYSERR_NOERROR;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
