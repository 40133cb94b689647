#include "panel/control_geometry.h"
#include "panel/control_state.h"

#include <gtest/gtest.h>

#include <limits>
#include <string_view>
#include <utility>

namespace percussomatic {
namespace {

constexpr double kFullHdScale = 1040.0 / 5153.0; // of the panel on a screen of 1920 x 1080

ControlRow rowNamed(std::string_view name) {
    return {"", name, "", "", "", "", "Image", 0, 0, 10, 10, 1};
}

class ControlLayout : public testing::Test {
protected:
    ControlLayout() { resetControlState(); }
    ~ControlLayout() override { resetControlState(); }
};

TEST_F(ControlLayout, StepButtonsAreNumberedToTheEndOfTheirNames) {
    const std::pair<const char*, int> cases[] = {{"bottone_001", 1},       {"BOTTONE_96", 96},
                                                 {"Bottone_0017", 17},     {"bottone_000", 0},
                                                 {"bottone_097", 0},       {"bottone_", 0},
                                                 {"bottone_12x", 0},       {"bottone_+12", 0},
                                                 {"bottone001", 0},        {"", 0},
                                                 {"bottone_4294967297", 0}};
    for (const auto& [name, number] : cases) {
        EXPECT_EQ(stepButtonNumber(rowNamed(name)), number) << name;
    }
}

TEST_F(ControlLayout, KindsComeFromNamesPicturesAndTypes) {
    ControlRow row = rowNamed("X");
    row.image = "SLIDER.png";
    EXPECT_TRUE(isSlider(row));
    row.type = "imagetogglebutton";
    EXPECT_FALSE(isToggle(row)) << "exact, unlike all others";
    EXPECT_TRUE(isRotary(rowNamed("ROTARY_002")) && !isInteractive(rowNamed("rotary_003")));
    EXPECT_EQ(findControl("PW_001"), findControl("pw_001"));
    EXPECT_EQ(findControl("pw_00"), kNoControl);
}

TEST_F(ControlLayout, ViewScaleFitsTheWholePanelAndRectanglesAreOnePixelGenerous) {
    EXPECT_EQ(viewScale({1618, 1040}), 1618.0 / 8019.0);
    EXPECT_EQ(viewScale({1619, 1040}), kFullHdScale);
    EXPECT_EQ(viewScale({0, 0}), 1.0);
    const int slider = findControl("slider_001");
    controlState().offset(slider) = 325;
    EXPECT_EQ(controlClientRect(slider, kFullHdScale), (PixelRect{212, 231, 225, 264}));
    EXPECT_EQ(controlClientRect(findControl("pw_001"), 0.5), (PixelRect{740, 2219, 820, 2403}));
}

TEST_F(ControlLayout, TopmostControlIsHitUpToItsRightAndLowerEdge) {
    const auto topAt = [](int x, int y, double scale = 1.0) -> std::string_view {
        const int index = topControlAt({x, y}, scale, [](int) { return true; });
        return index == kNoControl ? "" : controlRow(index).name;
    };
    // Step buttons touch; the lines do not.
    EXPECT_EQ(topAt(2552, 1130), "pannello_frontale_001");
    EXPECT_EQ(topAt(2730, 1313), "bottone_001");
    EXPECT_EQ(topAt(2731, 1313), "bottone_002");
    EXPECT_EQ(topAt(2553, 1129), "pannello_frontale_001");
    // sw_014 shows to the right of and below sw_015 only.
    EXPECT_EQ(topAt(5399, 4698), "sw_015");
    EXPECT_EQ(topAt(5400, 4698), "sw_014");
    EXPECT_EQ(topAt(5259, 4699), "pannello_sotto_001");
    // A slider is where it has been moved to.
    controlState().offset(findControl("slider_002")) = 650;
    EXPECT_EQ(topAt(1377, 1621), "slider_002");
    EXPECT_EQ(topAt(1437, 1779), "slider_002");
    // Client points fall on the layout unit below them.
    EXPECT_EQ(topAt(1276, 565, 0.5), "pannello_frontale_001");
    EXPECT_EQ(topAt(1277, 565, 0.5), "bottone_001");
    EXPECT_EQ(topAt(23, 0), "");
    EXPECT_EQ(topAt(2600, 1200, 0.0), "");
    EXPECT_EQ(topAt(2600, 1200, std::numeric_limits<double>::quiet_NaN()), "");
}

} // namespace
} // namespace percussomatic
