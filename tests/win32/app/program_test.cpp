// SPDX-License-Identifier: MIT
#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "cards/card_panel.h"
#include "midi/midi_state.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "win32/app/main_window.h"
#include "win32/app/start_up.h"
#include "win32/audio/wave_out.h"
#include "win32/messages.h"
#include "win32/midi/midi_input.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <future>
#include <ostream>

namespace percussomatic {
namespace {

// Runs the whole program on a thread of its own and operates it by window messages. After a sent
// message, the program's state may be read.
class Program : public testing::Test {
public:
    void SetUp() override {
        std::remove("LumivardaLayoutScale.txt");
        ended_ = std::async(std::launch::async,
                            [] { return runPercussomatic(GetModuleHandleW(nullptr)); });
        ASSERT_TRUE(waitUntil([this] {
            window_ = FindWindowW(kMainWindowClass, L"Percussomatic");
            return window_ != nullptr;
        }));
        send(WM_NULL, 0, 0); // handled when the message loop runs
        RECT client{};
        GetClientRect(window_, &client);
        scale_ = viewScale({client.right, client.bottom});
        rects_ = cardPanelRects({client.right, client.bottom});
    }
    void TearDown() override {
        EXPECT_TRUE(endsWithin(10000));
        std::remove("LumivardaLayoutScale.txt");
    }

    // Checks the exit code, too, and that everything is released.
    bool endsWithin(int milliseconds) {
        if (!ended_.valid()) {
            return true;
        }
        if (ended_.wait_for(std::chrono::milliseconds(milliseconds)) != std::future_status::ready) {
            return false;
        }
        EXPECT_EQ(ended_.get(), 0);
        EXPECT_EQ(waveOut().device, nullptr);
        EXPECT_FALSE(stepClock().thread.joinable());
        return true;
    }

    static bool waitUntil(const std::function<bool()>& condition) {
        int tries = 3000;
        while (!condition() && --tries > 0) {
            Sleep(10);
        }
        return tries > 0;
    }

    void send(UINT message, WPARAM wParam, LPARAM lParam) const {
        SendMessageW(window_, message, wParam, lParam);
    }
    static LPARAM centreOf(const PixelRect& rect) {
        return MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    }
    LPARAM centreOf(std::string_view control) const {
        return centreOf(controlClientRect(findControl(control), scale_));
    }
    template <typename Target> // a control's name or a rectangle
    void click(const Target& target) const {
        send(WM_LBUTTONDOWN, 0, centreOf(target));
        send(WM_LBUTTONUP, 0, centreOf(target));
    }
    void wheel(int delta) const {
        send(WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, static_cast<WORD>(delta)), 0);
    }

    HWND window_ = nullptr;
    double scale_ = 1.0;
    PanelRects rects_{};

private:
    std::future<int> ended_;
};

TEST_F(Program, ReleasesAPressedSwitchWhereverTheButtonGoesUpOrTheMouseGoes) {
    for (const UINT message : {UINT{WM_LBUTTONUP}, UINT{WM_CAPTURECHANGED}}) {
        send(WM_LBUTTONDOWN, 0, centreOf(control::kClearAll));
        EXPECT_TRUE(sequencer().clearAllHeld);
        send(message, 0, 0);
        EXPECT_FALSE(sequencer().clearAllHeld) << message;
    }
    send(WM_KEYDOWN, VK_ESCAPE, 0);
}

TEST_F(Program, TreatsAPortThatIsGoneAgainAsClosed) {
    setLearnStatus(L"");
    send(kMidiNotifyMessage, kMidiCmdConnectionChanged, 1);
    EXPECT_EQ(midiState().learnStatusText, L"No MIDI device connected");
    send(WM_KEYDOWN, VK_ESCAPE, 0);
}

TEST_F(Program, WaitsInSilenceForItsLastSaveWhileAnotherProgramUsesTheFile) {
    const std::filesystem::path card = cardFilePath(0);
    const auto saved = [&] { return std::filesystem::exists(card); };
    click(control::kStartStop);
    click(rects_.cards);
    click(rects_.save);
    EXPECT_TRUE(waitUntil(saved));
    EXPECT_TRUE(waitUntil([&] { // waits for the end of the save
        return !std::filesystem::exists(card.string() + ".1.saving");
    }));
    HANDLE other = CreateFileW(card.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               0, nullptr);
    EXPECT_NE(other, INVALID_HANDLE_VALUE);
    sequencer().pattern.set(0, 0, true);
    click(rects_.save);
    SendNotifyMessageW(window_, WM_CLOSE, 0, 0);
    EXPECT_TRUE(waitUntil([] { return soundEngine().outputMuted != 0; }));
    EXPECT_FALSE(endsWithin(0));
    CloseHandle(other);
    EXPECT_TRUE(endsWithin(3000));
    PunchCard read;
    EXPECT_TRUE(loadCardFile(card, read) && read.pattern.isSet(0, 0));
    std::filesystem::remove_all(kCardFolder);
}

TEST_F(Program, ResizesAroundItsCentre) {
    RECT old{}, small{};
    GetWindowRect(window_, &old);
    wheel(WHEEL_DELTA);
    EXPECT_EQ(std::fopen("LumivardaLayoutScale.txt", "r"), nullptr) << "written without a change";
    wheel(-WHEEL_DELTA);
    GetWindowRect(window_, &small);
    EXPECT_NEAR(small.right - small.left, 0.95 * (old.right - old.left), 1);
    EXPECT_NEAR(small.left + small.right, old.left + old.right, 2);
    send(WM_KEYDOWN, VK_ESCAPE, 0);
}

// What the program is doing when it is closed.
struct Situation {
    const char* name;
    void (*enter)(const class Closing& program);

    friend void PrintTo(const Situation& situation, std::ostream* out) { *out << situation.name; }
};

class Closing : public Program, public testing::WithParamInterface<Situation> {
public:
    // Posted, because opening a modal window returns only when it is closed.
    void openModal(const PixelRect& box) const {
        PostMessageW(window_, WM_LBUTTONDOWN, 0, centreOf(box));
    }
    bool hasEnded() const { return IsWindow(window_) == 0; }
    // Waits for the window; gives up if the program has ended.
    HWND shown(const wchar_t* windowClass, const wchar_t* title) const {
        HWND found = nullptr;
        EXPECT_TRUE(waitUntil([&] {
            found = FindWindowW(windowClass, title);
            return (found != nullptr && IsWindowVisible(found) != 0) || hasEnded();
        }));
        return found;
    }
};

constexpr Situation kSituations[] = {
    {"MessageBoxOverTempoDialog",
     [](const Closing& program) {
         program.openModal(program.rects_.bpm);
         HWND dialog = program.shown(L"PercussomaticBpmEditDialog", L"Set Tempo");
         constexpr int kEditId = 3101, kOkId = 3102;
         SetDlgItemTextW(dialog, kEditId, L"1");
         PostMessageW(dialog, WM_COMMAND, kOkId, 0);
         program.shown(L"#32770", L"Invalid BPM");
     }},
    {"TitleDialog",
     [](const Closing& program) {
         program.click(program.rects_.cards);
         program.openModal(program.rects_.title);
         program.shown(L"PunchCardTitleDialog", L"Punch Card Title");
     }},
    {"CardInsertion",
     [](const Closing& program) {
         program.click(control::kStartStop);
         program.click(program.rects_.cards);
         cardPanel().slots[0].used = true;
         program.click(program.rects_.load);
         EXPECT_TRUE(cardPanel().insertingCard || program.hasEnded());
     }},
    {"ToolWindowsAndLearn",
     [](const Closing& program) {
         program.click(control::kStartStop);
         program.click(program.rects_.info);
         program.click(program.rects_.effects);
         program.click(program.rects_.midi);
         program.shown(L"LumivardaMidiDeviceSelectorWindow", L"Percussomatic MIDI");
         PostMessageW(program.window_, kMidiNotifyMessage, kMidiCmdLearn, 0);
     }},
};

TEST_P(Closing, ByClosingTheWindow) {
    GetParam().enter(*this);
    PostMessageW(window_, WM_CLOSE, 0, 0);
    EXPECT_TRUE(endsWithin(2000));
}

TEST_P(Closing, ByTheEndOfTheSession) {
    GetParam().enter(*this);
    EXPECT_TRUE(SendMessageW(window_, WM_QUERYENDSESSION, 0, 0));
    send(WM_ENDSESSION, FALSE, 0); // cancelled by another program
    EXPECT_FALSE(hasEnded());
    send(WM_ENDSESSION, TRUE, 0);
    EXPECT_TRUE(hasEnded());
    EXPECT_TRUE(endsWithin(2000));
}

TEST_P(Closing, ByThePowerSwitchASecondBefore) {
    click(control::kPower);
    GetParam().enter(*this);
    EXPECT_TRUE(endsWithin(3000));
}

INSTANTIATE_TEST_SUITE_P(During, Closing, testing::ValuesIn(kSituations));

} // namespace
} // namespace percussomatic
