// The MIDI inputs of the stand-in for winmm.dll. The ports and what is played on them come from
// files that a test writes while the program runs.
//
// Environment variables, all with the prefix PERCUSSOMATIC_TEST_:
//   MIDI_PORTS      the ports in UTF-8, a name per line. "!caps ", "!open " or "!start " before the
//                   name makes that call fail. Read at each question: to rewrite the file is to
//                   plug and unplug. An open port that goes missing is silent until opened again.
//   MIDI_SCRIPT     what is played: lines "DELAY_US HEX", microseconds since the line before and
//                   the bytes of a short message. Test programs append to it; what stands in it
//                   when the program starts is not played. An empty line ends a passage: only then
//                   is it played, on a grid of its own that begins when it is read, so passages
//                   may overlap.
//   MIDI_DELIVERED  the journal, appended to; each line begins with the performance counter in ns:
//                   "NS played DUE_NS HEX", "NS lost DUE_NS HEX" when no port was listening, and
//                   "NS open NAME", "NS start", "NS stop", "NS reset", "NS close" for calls that
//                   succeeded
//
// One port can be open at a time; whatever is played comes from it.
//
// Threads: any. One of its own plays, from the program's start to its end.

#define _WINMM_ // NOLINT(bugprone-reserved-identifier): declares what follows without dllimport

#include "midi_stand_in.h"

#include <windows.h>

#include <mmsystem.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <cwchar>
#include <map>
#include <string_view>
#include <vector>

namespace {

using namespace stand_in;

using Callback = void(CALLBACK*)(HMIDIIN, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);
using DelayExecution = LONG(NTAPI*)(BOOLEAN alertable, const LARGE_INTEGER* interval);

constexpr std::int64_t kLookNs = 5 * kNsPerMs; // between two looks at the files

struct Port {
    std::wstring name;
    std::wstring fault; // "!caps ", "!open ", "!start " or empty
};

struct OpenPort {
    SRWLOCK lock = SRWLOCK_INIT;
    // All guarded by lock, which is held through MIM_DATA: once midiInStop has returned, nothing
    // arrives any more.
    bool open = false, started = false, plugged = false;
    Port port;
    Callback callback = nullptr;
    DWORD_PTR instance = 0;
    std::int64_t startedNs = 0;
    HANDLE journal = INVALID_HANDLE_VALUE;
};

OpenPort thePort;
const auto kHandle = std::bit_cast<HMIDIIN>(&thePort);

HANDLE openToRead(const std::wstring& path) {
    return CreateFileW(path.c_str(), GENERIC_READ,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// From where the last read ended to the end of the file.
std::string readOn(HANDLE file) {
    std::string text;
    std::array<char, 16384> part{};
    DWORD bytes = 0;
    while (ReadFile(file, part.data(), static_cast<DWORD>(part.size()), &bytes, nullptr) != 0 &&
           bytes > 0) {
        text.append(part.data(), bytes);
    }
    return text;
}

std::wstring wide(std::string_view utf8) {
    std::wstring text(utf8.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()),
                                           text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::string utf8(std::wstring_view text) {
    std::string bytes(3 * text.size(), '\0');
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

// Takes the first line off the text.
std::string_view nextLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

std::vector<Port> readPorts() {
    std::vector<Port> ports;
    const HANDLE file = openToRead(setting(L"MIDI_PORTS"));
    if (file == INVALID_HANDLE_VALUE) {
        return ports;
    }
    const std::string text = readOn(file);
    CloseHandle(file);
    for (std::string_view rest = text; !rest.empty();) {
        Port port{wide(nextLine(rest)), {}};
        for (const std::wstring_view fault : {L"!caps ", L"!open ", L"!start "}) {
            if (port.name.starts_with(fault)) {
                port.fault = fault;
                port.name.erase(0, fault.size());
            }
        }
        if (!port.name.empty()) {
            ports.push_back(port);
        }
    }
    return ports;
}

// One call of the system per line: what is written stays when the program is killed.
void writeDownLocked(std::int64_t nowNs, const std::string& what) {
    const std::string line = std::to_string(nowNs) + " " + what + "\n";
    DWORD written = 0;
    WriteFile(thePort.journal, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

std::uint32_t packed(std::string_view hex) {
    std::uint32_t message = 0;
    for (std::size_t at = std::min<std::size_t>(hex.size(), 6) / 2; at-- > 0;) {
        std::uint32_t byte = 0;
        std::from_chars(hex.data() + 2 * at, hex.data() + 2 * at + 2, byte, 16);
        message = message << 8 | byte;
    }
    return message;
}

void deliver(std::int64_t dueNs, const std::string& hex) {
    const Lock lock(thePort.lock);
    const std::int64_t nowNs = counterNs();
    const bool listening = thePort.started && thePort.plugged;
    if (listening) {
        const auto sinceStartMs = static_cast<DWORD_PTR>((nowNs - thePort.startedNs) / kNsPerMs);
        thePort.callback(kHandle, MIM_DATA, thePort.instance, packed(hex), sinceStartMs);
    }
    writeDownLocked(nowNs, (listening ? "played " : "lost ") + std::to_string(dueNs) + " " + hex);
}

void noticeUnplugged() {
    const Lock lock(thePort.lock);
    if (thePort.open && thePort.plugged) {
        const std::vector<Port> ports = readPorts();
        thePort.plugged = std::any_of(ports.begin(), ports.end(), [](const Port& port) {
            return port.name == thePort.port.name;
        });
    }
}

// The script as far as it has been read. Playing thread only.
class Script {
public:
    // What stands in the file so far was meant for an earlier run.
    explicit Script(HANDLE file) : file_(file) { readOn(file_); }

    void lookForPassages() {
        unread_ += readOn(file_);
        const std::size_t end = unread_.rfind("\n\n");
        if (end == std::string::npos) {
            return;
        }
        const std::int64_t nowNs = counterNs();
        std::int64_t dueNs = nowNs;
        for (std::string_view rest = std::string_view(unread_).substr(0, end + 2); !rest.empty();) {
            const std::string_view line = nextLine(rest);
            if (line.empty()) {
                dueNs = nowNs;
                continue;
            }
            std::int64_t delayUs = 0;
            std::from_chars(line.data(), line.data() + line.size(), delayUs);
            dueNs += delayUs * kNsPerUs;
            coming_.emplace(dueNs, line.substr(line.rfind(' ') + 1));
        }
        unread_.erase(0, end + 2);
    }

    void playDue() {
        while (!coming_.empty() && coming_.begin()->first <= counterNs()) {
            deliver(coming_.begin()->first, coming_.begin()->second);
            coming_.erase(coming_.begin());
        }
    }

    std::int64_t nextDueNs(std::int64_t latestNs) const {
        return coming_.empty() ? latestNs : std::min(latestNs, coming_.begin()->first);
    }

private:
    HANDLE file_;
    std::string unread_;                              // the beginning of a passage
    std::multimap<std::int64_t, std::string> coming_; // by due time; equal ones in written order
};

DWORD WINAPI play(void* /*nothing*/) {
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    // Unlike Sleep it counts in units of 100 ns.
    const auto delayExecution = std::bit_cast<DelayExecution>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtDelayExecution"));
    const HANDLE file = openToRead(setting(L"MIDI_SCRIPT"));
    if (file == INVALID_HANDLE_VALUE) {
        return 1;
    }
    Script script(file);
    std::int64_t nextLookNs = 0;
    for (;;) {
        if (counterNs() >= nextLookNs) {
            script.lookForPassages();
            // After the script, so that a test which unplugs and then sends is not heard.
            noticeUnplugged();
            nextLookNs = counterNs() + kLookNs;
        }
        script.playDue();
        const std::int64_t remainingNs = script.nextDueNs(nextLookNs) - counterNs();
        if (remainingNs > 0) {
            LARGE_INTEGER interval;
            interval.QuadPart = -(remainingNs / 100);
            delayExecution(0, &interval);
        }
    }
}

bool isOpenLocked(HMIDIIN device) {
    return thePort.open && device == kHandle;
}

// What midiInStop and midiInReset have in common: nothing is ever queued that a reset gives back.
MMRESULT stopInput(HMIDIIN device, const char* word) {
    const Lock lock(thePort.lock);
    if (!isOpenLocked(device)) {
        return MMSYSERR_INVALHANDLE;
    }
    thePort.started = false;
    writeDownLocked(counterNs(), word);
    return MMSYSERR_NOERROR;
}

} // namespace

void stand_in::startMidiPlayer() {
    if (const std::wstring path = setting(L"MIDI_DELIVERED"); !path.empty()) {
        thePort.journal =
            CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    if (!setting(L"MIDI_SCRIPT").empty()) {
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
    if (ports[id].fault == L"!caps ") {
        return MMSYSERR_NODRIVER;
    }
    MIDIINCAPSW found{};
    found.vDriverVersion = 0x0100;
    ports[id].name.copy(found.szPname, std::size(found.szPname) - 1);
    std::memcpy(caps, &found, std::min<std::size_t>(size, sizeof(found)));
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI midiInOpen(LPHMIDIIN device, UINT id, DWORD_PTR callback, DWORD_PTR instance,
                           DWORD flags) {
    {
        const Lock lock(thePort.lock);
        const std::vector<Port> ports = readPorts();
        if (id >= ports.size()) {
            return MMSYSERR_BADDEVICEID;
        }
        if (thePort.open || ports[id].fault == L"!open ") {
            return MMSYSERR_ALLOCATED;
        }
        if (flags != CALLBACK_FUNCTION || callback == 0) {
            return MMSYSERR_INVALPARAM;
        }
        thePort.open = thePort.plugged = true;
        thePort.started = false;
        thePort.port = ports[id];
        thePort.callback = std::bit_cast<Callback>(callback);
        thePort.instance = instance;
        writeDownLocked(counterNs(), "open " + utf8(thePort.port.name));
    }
    *device = kHandle;
    std::bit_cast<Callback>(callback)(kHandle, MIM_OPEN, instance, 0, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI midiInStart(HMIDIIN device) {
    const Lock lock(thePort.lock);
    if (!isOpenLocked(device)) {
        return MMSYSERR_INVALHANDLE;
    }
    if (thePort.port.fault == L"!start ") {
        return MMSYSERR_ERROR;
    }
    thePort.started = true;
    thePort.startedNs = counterNs();
    writeDownLocked(thePort.startedNs, "start");
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI midiInStop(HMIDIIN device) {
    return stopInput(device, "stop");
}

MMRESULT WINAPI midiInReset(HMIDIIN device) {
    return stopInput(device, "reset");
}

MMRESULT WINAPI midiInClose(HMIDIIN device) {
    Callback callback = nullptr;
    DWORD_PTR instance = 0;
    {
        const Lock lock(thePort.lock);
        if (!isOpenLocked(device)) {
            return MMSYSERR_INVALHANDLE;
        }
        thePort.open = thePort.started = false;
        callback = thePort.callback;
        instance = thePort.instance;
        writeDownLocked(counterNs(), "close");
    }
    callback(kHandle, MIM_CLOSE, instance, 0, 0);
    return MMSYSERR_NOERROR;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
