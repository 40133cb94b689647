#include "cards/card_panel.h"
#include "panel/control_geometry.h"
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
#include <functional>
#include <future>
#include <ostream>
#include <utility>

namespace percussomatic {
namespace {

// The whole program on a thread of its own, played by messages as the system would send them. What
// a sent message changes may be read when it has returned.
class Program : public testing::Test {
public:
    void SetUp() override { begin(); }
    void TearDown() override {
        EXPECT_TRUE(endsWithin(std::chrono::seconds(10)));
        std::remove("LumivardaLayoutScale.txt");
    }

    void begin() {
        std::remove("LumivardaLayoutScale.txt");
        ended_ = std::async(std::launch::async,
                            [] { return runPercussomatic(GetModuleHandleW(nullptr)); });
        ASSERT_TRUE(waitUntil([this] {
            window_ = FindWindowW(kMainWindowClass, L"Percussomatic");
            return window_ != nullptr;
        }));
        SendMessageW(window_, WM_NULL, 0, 0); // start-up is over when the loop answers
        RECT client{};
        GetClientRect(window_, &client);
        scale_ = viewScale({client.right, client.bottom});
        rects_ = cardPanelRects({client.right, client.bottom});
    }
    // With code 0, nothing left behind.
    bool endsWithin(std::chrono::milliseconds limit) {
        if (!ended_.valid()) {
            return true;
        }
        if (ended_.wait_for(limit) != std::future_status::ready) {
            return false;
        }
        EXPECT_EQ(ended_.get(), 0);
        EXPECT_EQ(waveOut().device, nullptr);
        EXPECT_FALSE(stepClock().thread.joinable());
        return true;
    }

    static bool waitUntil(const std::function<bool()>& question) {
        for (int tries = 0; tries < 3000; ++tries) {
            if (question()) {
                return true;
            }
            Sleep(10);
        }
        return false;
    }

    void send(UINT message, WPARAM wParam, LPARAM lParam) const {
        SendMessageW(window_, message, wParam, lParam);
    }

    static PixelPoint middle(const PixelRect& rect) {
        return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    }
    PixelPoint middle(const char* name) const {
        return middle(controlClientRect(findControl(name), scale_));
    }
    void mouse(UINT message, PixelPoint at) const { send(message, 0, MAKELPARAM(at.x, at.y)); }
    void press(PixelPoint at) const {
        mouse(WM_LBUTTONDOWN, at);
        mouse(WM_LBUTTONUP, at);
    }
    void press(const PixelRect& box) const { press(middle(box)); }
    void click(const char* name) const { press(middle(name)); }

    HWND window_ = nullptr;
    double scale_ = 1.0;
    PanelRects rects_{};

private:
    std::future<int> ended_;
};

TEST_F(Program, ReleasesWhatIsHeldAnywhereAndResizesAboutItsMiddle) {
    mouse(WM_LBUTTONDOWN, middle("sw_018"));
    EXPECT_TRUE(sequencer().clearAllHeld);
    mouse(WM_LBUTTONUP, {0, 0});
    EXPECT_FALSE(sequencer().clearAllHeld);

    RECT old{}, small{};
    GetWindowRect(window_, &old);
    send(WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, WHEEL_DELTA), 0);
    EXPECT_EQ(std::fopen("LumivardaLayoutScale.txt", "r"), nullptr) << "written without a change";
    send(WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, static_cast<WORD>(-WHEEL_DELTA)), 0);
    GetWindowRect(window_, &small);
    EXPECT_NEAR(small.right - small.left, 0.95 * (old.right - old.left), 1);
    EXPECT_NEAR(small.left + small.right, old.left + old.right, 2) << "about its middle";
    scale_ *= 0.95;
    click("pw_001");
}

// What the player has done when the end comes. A modal window keeps the keyboard from the panel.
struct Situation {
    const char* name;
    bool modal;
    void (*enter)(const class Ending& program);
};

void PrintTo(const Situation& situation, std::ostream* out) {
    *out << situation.name;
}

class Ending : public Program, public testing::WithParamInterface<Situation> {
public:
    // What opens a modal window answers only when that has gone.
    void pressModal(const PixelRect& box) const {
        PostMessageW(window_, WM_LBUTTONDOWN, 0, MAKELPARAM(middle(box).x, middle(box).y));
    }
    void command(WPARAM code) const { PostMessageW(window_, kMidiNotifyMessage, code, 0); }
    bool hasEnded() const { return IsWindow(window_) == 0; }
    // Also when the program has ended meanwhile.
    HWND shown(const wchar_t* windowClass, const wchar_t* title) const {
        HWND found = nullptr;
        EXPECT_TRUE(waitUntil([&] {
            found = FindWindowW(windowClass, title);
            return (found != nullptr && IsWindowVisible(found) != 0) || hasEnded();
        }));
        return found;
    }
};

constexpr wchar_t kTempoClass[] = L"PercussomaticBpmEditDialog", kMessageClass[] = L"#32770";
constexpr Situation kSituations[] = {
    {"Playing", false, [](const Ending& program) { program.click("sw_007"); }},
    {"TempoDialog", true,
     [](const Ending& program) {
         program.click("sw_007");
         program.pressModal(program.rects_.bpm);
         program.shown(kTempoClass, L"Set Tempo");
     }},
    {"MessageOverTempoDialog", true,
     [](const Ending& program) {
         program.pressModal(program.rects_.bpm);
         HWND dialog = program.shown(kTempoClass, L"Set Tempo");
         constexpr int kEditId = 3101, kOkId = 3102;
         SetDlgItemTextW(dialog, kEditId, L"1");
         PostMessageW(dialog, WM_COMMAND, kOkId, 0);
         program.shown(kMessageClass, L"Invalid BPM");
     }},
    {"Message", true,
     [](const Ending& program) {
         program.command(kMidiCmdMidiClock);
         program.pressModal(program.rects_.bpm);
         program.shown(kMessageClass, L"Set Tempo");
     }},
    {"TitleDialog", true,
     [](const Ending& program) {
         program.press(program.rects_.cards);
         program.pressModal(program.rects_.title);
         program.shown(L"PunchCardTitleDialog", L"Punch Card Title");
     }},
    {"CardInsertion", false,
     [](const Ending& program) {
         program.click("sw_007");
         program.press(program.rects_.cards);
         cardPanel().slots[0].used = true;
         program.press(program.rects_.load);
         EXPECT_TRUE(cardPanel().insertingCard || program.hasEnded());
     }},
    {"WindowsAndLearning", false,
     [](const Ending& program) {
         program.click("sw_007");
         program.press(program.rects_.info);
         program.press(program.rects_.effects);
         program.press(program.rects_.midi);
         program.shown(L"LumivardaMidiDeviceSelectorWindow", L"Percussomatic MIDI");
         program.command(kMidiCmdLearn);
     }},
};

TEST_P(Ending, ComesSoonAndWhole) {
    const struct {
        const char* name;
        std::function<void()> press;
        bool byKeyboard = false;
        bool first = false; // what follows happens within the switch's second
    } ways[] = {
        {"Escape", [this] { send(WM_KEYDOWN, VK_ESCAPE, 0); }, true},
        {"close", [this] { PostMessageW(window_, WM_CLOSE, 0, 0); }},
        {"end of the log-on",
         [this] {
             EXPECT_TRUE(SendMessageW(window_, WM_QUERYENDSESSION, 0, 0));
             send(WM_ENDSESSION, FALSE, 0); // somebody has objected
             EXPECT_TRUE(IsWindow(window_));
             send(WM_ENDSESSION, TRUE, 0);
             EXPECT_FALSE(IsWindow(window_));
         }},
        {"power switch", [this] { click("pw_001"); }, false, true},
    };
    bool begun = true;
    for (const auto& [name, press, byKeyboard, first] : ways) {
        SCOPED_TRACE(name);
        if (byKeyboard && GetParam().modal) {
            continue;
        }
        if (!std::exchange(begun, false)) {
            begin();
        }
        if (first) {
            press();
        }
        GetParam().enter(*this);
        if (!first) {
            press();
        }
        ASSERT_TRUE(endsWithin(std::chrono::milliseconds(first ? 3000 : 2000)));
    }
}

INSTANTIATE_TEST_SUITE_P(From, Ending, testing::ValuesIn(kSituations),
                         [](const auto& situation) { return situation.param.name; });

TEST(RealDevice, OpensAndClosesAHundredTimes) {
    if (waveOutGetNumDevs() == 0) {
        GTEST_SKIP() << "no sound device";
    }
    WaveOut out(soundEngine());
    for (int cycle = 0; cycle < 100; ++cycle) {
        ASSERT_TRUE(out.start()) << cycle;
        soundEngine().trigger(0, 1.0f);
        out.stop();
        ASSERT_EQ(out.device, nullptr);
    }
}

} // namespace
} // namespace percussomatic
