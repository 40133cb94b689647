#include "app/main_window.h"
#include "app/start_up.h"
#include "sequencer/sequencer.h"
#include "ui/control_layout.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <thread>

namespace percussomatic {
namespace {

// The whole program on a thread of its own, played by messages as the system would send them. What
// a sent message changes may be read when it has returned.
class Program : public testing::Test {
protected:
    void SetUp() override {
        std::remove("LumivardaLayoutScale.txt");
        program_ = std::thread([this] { exitCode_ = runPercussomatic(GetModuleHandleW(nullptr)); });
        for (int tries = 0; tries < 600 && window_ == nullptr; ++tries) {
            Sleep(50);
            window_ = FindWindowW(kMainWindowClass, L"Percussomatic");
        }
        ASSERT_NE(window_, nullptr);
        SendMessageW(window_, WM_NULL, 0, 0); // start-up is over when the loop answers
        RECT client{};
        GetClientRect(window_, &client);
        scale_ = viewScale(client.right, client.bottom);
    }
    void TearDown() override {
        program_.join();
        EXPECT_EQ(exitCode_, 0);
        std::remove("LumivardaLayoutScale.txt");
    }

    void send(UINT message, WPARAM wParam, LPARAM lParam) const {
        SendMessageW(window_, message, wParam, lParam);
    }

    PixelPoint middle(const char* name) const {
        const PixelRect rect = controlClientRect(findControl(name), scale_);
        return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    }
    void mouse(UINT message, PixelPoint at) const { send(message, 0, MAKELPARAM(at.x, at.y)); }
    void click(const char* name) const {
        mouse(WM_LBUTTONDOWN, middle(name));
        mouse(WM_LBUTTONUP, middle(name));
    }
    void drag(PixelPoint from, int dx, int dy) const {
        mouse(WM_LBUTTONDOWN, from);
        mouse(WM_MOUSEMOVE, {from.x + dx / 2, from.y + dy / 2});
        mouse(WM_MOUSEMOVE, {from.x + dx, from.y + dy});
        mouse(WM_LBUTTONUP, {from.x + dx, from.y + dy});
    }

    HWND window_ = nullptr;
    double scale_ = 1.0;

private:
    std::thread program_;
    std::atomic<int> exitCode_ = -1;
};

TEST_F(Program, RoutesEveryGestureUntilThePowerSwitchEndsIt) {
    click("bottone_035");
    EXPECT_TRUE(sequencer().pattern.isSet(2, 2));
    mouse(WM_LBUTTONDOWN, middle("sw_018"));
    EXPECT_TRUE(sequencer().clearAllHeld);
    EXPECT_FALSE(sequencer().pattern.isSet(2, 2));
    mouse(WM_LBUTTONUP, {0, 0});
    EXPECT_FALSE(sequencer().clearAllHeld);

    drag(middle("slider_002"), 1000, 0);
    EXPECT_EQ(lineVolume(1), 1.0f);
    drag(middle("rotary_002"), 0, -42);
    EXPECT_NEAR(sequencer().bpm, 140.0, 1e-9);
    POINT at{middle("rotary_002").x, middle("rotary_002").y};
    ClientToScreen(window_, &at);
    send(WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA), MAKELPARAM(at.x, at.y));
    EXPECT_NEAR(sequencer().bpm, 145.0, 1e-9);

    RECT old{}, small{};
    GetWindowRect(window_, &old);
    send(WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, WHEEL_DELTA), 0);
    EXPECT_EQ(std::fopen("LumivardaLayoutScale.txt", "r"), nullptr) << "written without a change";
    send(WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, static_cast<WORD>(-WHEEL_DELTA)), 0);
    GetWindowRect(window_, &small);
    EXPECT_NEAR(small.right - small.left, 0.95 * (old.right - old.left), 1);
    EXPECT_NEAR(small.left + small.right, old.left + old.right, 2) << "about its middle";

    scale_ *= 0.95;
    click("sw_007");
    EXPECT_TRUE(sequencer().running);
    const std::uint32_t before = sequencer().currentStep;
    send(kStepTickMessage, 0, 0);
    EXPECT_NE(sequencer().currentStep, before);
    const DWORD start = GetTickCount();
    click("pw_001");
    EXPECT_FALSE(sequencer().running);
    for (int tries = 0; tries < 600 && IsWindow(window_) != 0; ++tries) {
        Sleep(10);
    }
    EXPECT_FALSE(IsWindow(window_));
    EXPECT_GE(GetTickCount() - start, 900U);
}

} // namespace
} // namespace percussomatic
