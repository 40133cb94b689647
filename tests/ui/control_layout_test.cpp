#include "ui/control_layout.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic {
namespace {

constexpr double kFullHdScale = 1040.0 / 5153.0; // of the panel on a screen of 1920 x 1080

ControlRow rowNamed(std::string_view name) {
    return {"", name, "", "", "", "", "Image", 0, 0, 10, 10, 1};
}

std::string topAt(PixelPoint client, double scale) {
    const int index = topControlAt(client, scale, [](int) { return true; });
    return index == kNoControl ? ""
                               : std::string(controlRows()[static_cast<std::size_t>(index)].name);
}

class ControlLayout : public testing::Test {
protected:
    ControlLayout() { resetControlState(); }
    ~ControlLayout() override { resetControlState(); }
};

TEST_F(ControlLayout, OnlyTheCabinetItsPanelsAndTheCardReaderAreBackground) {
    std::vector<std::string> background;
    std::set<std::string_view> names, ids;
    for (const ControlRow& row : controlRows()) {
        names.insert(row.name);
        ids.insert(row.stableId);
        if (!isInteractive(row)) {
            background.emplace_back(row.name);
        }
    }
    EXPECT_EQ(background, (std::vector<std::string>{"mobile_001", "pannello_frontale_001",
                                                    "pannello_sotto_001", "c_scheda_001"}));
    EXPECT_EQ(names.size(), controlRows().size());
    EXPECT_EQ(ids.size(), controlRows().size());
}

TEST_F(ControlLayout, StepButtonsAreNumberedToTheEndOfTheirNames) {
    const struct {
        std::string_view name;
        int number;
    } cases[] = {
        {"bottone_001", 1}, {"BOTTONE_96", 96}, {"Bottone_0017", 17},
        {"bottone_000", 0}, {"bottone_097", 0}, {"bottone_", 0},
        {"bottone_12x", 0}, {"bottone_x12", 0}, {"bottone_ 12", 0},
        {"bottone_+12", 0}, {"bottone_-12", 0}, {"bottone_4294967297", 0},
        {"bottone001", 0},  {"sw_001", 0},      {"", 0},
    };
    for (const auto& [name, number] : cases) {
        EXPECT_EQ(stepButtonNumber(rowNamed(name)), number) << name;
    }
    ControlRow hidden = rowNamed("bottone_001");
    hidden.visible = 0;
    EXPECT_EQ(stepButtonNumber(hidden), 0);
}

TEST_F(ControlLayout, KindsComeFromNamesPicturesAndTypes) {
    ControlRow row = rowNamed("X");
    row.image = "SLIDER.png";
    EXPECT_TRUE(isSlider(row));
    row.image = "bin_OFF.png";
    EXPECT_TRUE(isBeatLamp(row));
    row.type = "sLIDER";
    EXPECT_TRUE(isSlider(row));
    row.type = "imagetogglebutton";
    EXPECT_FALSE(isToggle(row)) << "exact, unlike all others";
    EXPECT_TRUE(isRotary(rowNamed("ROTARY_002")));
    EXPECT_FALSE(isRotary(rowNamed("rotary_003")));
    EXPECT_FALSE(isInteractive(rowNamed("rotary_003")));
    row = rowNamed("rotary_001");
    row.visible = 0;
    EXPECT_FALSE(isInteractive(row));

    EXPECT_EQ(findControl("PW_001"), findControl("pw_001"));
    EXPECT_EQ(findControl("pw_00"), kNoControl);
}

TEST_F(ControlLayout, SizeIsTheFarEdgeOfWhatIsVisible) {
    ControlRow wide = rowNamed("wide"), hidden = rowNamed("hidden");
    wide.x = 500;
    hidden.y = 900;
    hidden.visible = 0;
    const ControlRow rows[] = {rowNamed("small"), wide, hidden};
    EXPECT_EQ(layoutSize(rows).width, 510);
    EXPECT_EQ(layoutSize(rows).height, 10);
    EXPECT_EQ(layoutSize({&hidden, 1}).width, 1000);
    EXPECT_EQ(layoutSize({&hidden, 1}).height, 600);
    EXPECT_EQ(layoutSize().width, 8019);
    EXPECT_EQ(layoutSize().height, 5153);
}

TEST_F(ControlLayout, ViewScaleFitsTheWholePanel) {
    const struct {
        int width, height;
        double scale;
    } cases[] = {
        {8019, 5153, 1.0},
        {1618, 1040, 1618.0 / 8019.0},
        {1619, 1040, kFullHdScale},
        {800, 5153, 800.0 / 8019.0},
        {16038, 10306, 2.0},
        {0, 0, 1.0},
        {100, 0, 1.0},
    };
    for (const auto& [width, height, scale] : cases) {
        EXPECT_EQ(viewScale(width, height), scale) << width << " x " << height;
    }
}

TEST_F(ControlLayout, ClientRectanglesAreTruncatedAndOnePixelGenerous) {
    const struct {
        const char* name;
        std::uint32_t offset;
        double scale;
        PixelRect rect;
    } cases[] = {
        {"mobile_001", 0, kFullHdScale, {4, -6, 1619, 1041}},
        {"bottone_001", 0, kFullHdScale, {515, 228, 552, 266}},
        {"slider_001", 0, kFullHdScale, {146, 231, 160, 264}},
        {"slider_001", 325, kFullHdScale, {212, 231, 225, 264}},
        {"slider_001", 650, kFullHdScale, {277, 231, 291, 264}},
        {"rotary_002", 0, kFullHdScale, {499, 904, 557, 963}},
        {"sw_016", 0, kFullHdScale, {1097, 919, 1126, 949}},
        {"pw_001", 0, 1.0, {1480, 4439, 1639, 4806}},
        {"pw_001", 0, 0.5, {740, 2219, 820, 2403}},
    };
    for (const auto& [name, offset, scale, rect] : cases) {
        const int index = findControl(name);
        controlState().sliderOffset[static_cast<std::size_t>(index)] = offset;
        EXPECT_EQ(controlClientRect(index, scale), rect) << name << " at " << offset;
    }
}

TEST_F(ControlLayout, TopmostControlIsHitUpToItsRightAndLowerEdge) {
    controlState().sliderOffset[static_cast<std::size_t>(findControl("slider_002"))] = 650;
    const struct {
        PixelPoint client;
        double scale;
        const char* name;
    } cases[] = {
        // Step buttons touch; the lines do not.
        {{2553, 1130}, 1.0, "bottone_001"},
        {{2552, 1130}, 1.0, "pannello_frontale_001"},
        {{2730, 1313}, 1.0, "bottone_001"},
        {{2731, 1313}, 1.0, "bottone_002"},
        {{2730, 1314}, 1.0, "pannello_frontale_001"},
        {{2553, 1129}, 1.0, "pannello_frontale_001"},
        {{5227, 3675}, 1.0, "bottone_096"},
        {{5398, 3676}, 1.0, "pannello_frontale_001"},
        // sw_014 shows to the right of and below sw_015 only.
        {{5258, 4557}, 1.0, "sw_015"},
        {{5260, 4563}, 1.0, "sw_015"},
        {{5399, 4698}, 1.0, "sw_015"},
        {{5400, 4698}, 1.0, "sw_014"},
        {{5401, 4704}, 1.0, "sw_014"},
        {{5260, 4699}, 1.0, "sw_014"},
        {{5259, 4699}, 1.0, "pannello_sotto_001"},
        {{5402, 4698}, 1.0, "pannello_sotto_001"},
        // A slider is where it has been moved to.
        {{727, 1621}, 1.0, "pannello_frontale_001"},
        {{1376, 1621}, 1.0, "pannello_frontale_001"},
        {{1377, 1621}, 1.0, "slider_002"},
        {{1437, 1779}, 1.0, "slider_002"},
        {{1438, 1779}, 1.0, "pannello_frontale_001"},
        // Client points fall on the layout unit below them.
        {{1276, 565}, 0.5, "pannello_frontale_001"},
        {{1277, 565}, 0.5, "bottone_001"},
        {{5107, 2260}, 2.0, "bottone_001"},
        {{5105, 2260}, 2.0, "pannello_frontale_001"},
        {{949, 0}, 1.0, "mobile_001"},
        {{23, 0}, 1.0, ""},
        {{8019, 4000}, 1.0, ""},
        {{2600, 1200}, 0.0, ""},
        {{2600, 1200}, -1.0, ""},
        {{2600, 1200}, std::numeric_limits<double>::quiet_NaN(), ""},
    };
    for (const auto& [client, scale, name] : cases) {
        EXPECT_EQ(topAt(client, scale), name) << client.x << ", " << client.y << " at " << scale;
    }
}

TEST_F(ControlLayout, PicksFindOnlyTheirKind) {
    const struct {
        PixelPoint client;
        const char *rotary, *slider;
    } cases[] = {
        {{1944, 4484}, "rotary_001", ""}, {{2758, 4767}, "rotary_002", ""}, {{2759, 4767}, "", ""},
        {{727, 3508}, "", "slider_006"},  {{787, 3666}, "", "slider_006"},  {{788, 3666}, "", ""},
        {{3000, 1200}, "", ""},
    };
    for (const auto& [client, rotary, slider] : cases) {
        EXPECT_EQ(rotaryAt(client, 1.0), findControl(rotary)) << client.x;
        EXPECT_EQ(sliderAt(client, 1.0), findControl(slider)) << client.x;
    }
}

} // namespace
} // namespace percussomatic
