// SPDX-License-Identifier: MIT
#include "panel/panel_rects.h"

#include "panel/display_scale.h"

#include <gtest/gtest.h>

namespace percussomatic {
namespace {

TEST(PanelRects, FollowTheWindowsSizeAndTheDisplaysDpi) {
    using Rects = PanelRects;
    // A full-size window on a screen of 1920 x 1080; a quarter of that, where the dialog is
    // narrower than its three buttons; 150 % of it at 144 DPI. Card positions are truncated on both
    // sides of 0.
    const struct {
        PixelRect Rects::*rect;
        PixelRect full, quarter, highDpi;
    } cases[] = {
        {&Rects::info, {64, 12, 142, 40}, {16, 8, 70, 28}, {96, 18, 213, 60}},
        {&Rects::bpm, {442, 12, 542, 40}, {148, 8, 218, 28}, {663, 18, 813, 60}},
        {&Rects::cards, {1476, 12, 1554, 40}, {333, 8, 387, 28}, {2214, 18, 2331, 60}},
        {&Rects::midi, {1386, 12, 1464, 40}, {275, 8, 329, 28}, {2079, 18, 2196, 60}},
        {&Rects::effects, {1296, 12, 1374, 40}, {218, 8, 272, 28}, {1944, 18, 2061, 60}},
        {&Rects::dialog, {227, 73, 1391, 967}, {57, 18, 347, 241}, {340, 109, 2087, 1450}},
        {&Rects::dialogCard, {673, 121, 944, 903}, {183, 66, 221, 177}, {1010, 181, 1417, 1354}},
        {&Rects::previousCard, {249, 493, 303, 547}, {79, 102, 133, 156}, {373, 738, 454, 820}},
        {&Rects::nextCard, {1315, 493, 1369, 547}, {271, 102, 325, 156}, {1973, 738, 2054, 820}},
        {&Rects::title, {661, 925, 753, 955}, {54, 199, 146, 229}, {991, 1387, 1129, 1432}},
        {&Rects::save, {763, 925, 855, 955}, {156, 199, 248, 229}, {1144, 1387, 1282, 1432}},
        {&Rects::load, {865, 925, 957, 955}, {258, 199, 350, 229}, {1297, 1387, 1435, 1432}},
        {&Rects::cancel, {1287, 83, 1375, 111}, {243, 28, 331, 56}, {1931, 124, 2063, 166}},
        {&Rects::reader, {1270, 0, 1529, 946}, {317, 0, 381, 236}, {1905, 0, 2293, 1419}},
        {&Rects::readerCard, {1324, -438, 1474, -7}, {330, 100, 367, 206}, {1986, 0, 2211, 646}},
    };
    const Rects full = panelRects(1618, 1040, -438.7), quarter = panelRects(404, 260, 100.9);
    displayDpi() = 144;
    const Rects highDpi = panelRects(2427, 1560, 0.0);
    displayDpi() = kDesignDpi;
    for (const auto& expected : cases) {
        SCOPED_TRACE(&expected - cases);
        EXPECT_EQ(full.*expected.rect, expected.full);
        EXPECT_EQ(quarter.*expected.rect, expected.quarter);
        EXPECT_EQ(highDpi.*expected.rect, expected.highDpi);
    }
    EXPECT_EQ(panelRects(400, 2000, 0).dialogCard, (PixelRect{164, 188, 236, 395})) << "by width";
    EXPECT_EQ(panelRects(676, 1040, 0).dialogCard, (PixelRect{203, 121, 473, 897}))
        << "one pixel too narrow to be limited by height";
}

TEST(PanelRects, StripFitsAnyWidthAsLargeAsPossible) {
    for (const int dpi : {96, 120, 144, 192, 288}) {
        displayDpi() = dpi;
        for (int width = 120; width < 2700; ++width) {
            SCOPED_TRACE(std::to_string(dpi) + " DPI, width " + std::to_string(width));
            const PanelRects rects = panelRects(width, 400, 0);
            int end = 0;
            for (const PixelRect& box :
                 {rects.info, rects.bpm, rects.effects, rects.midi, rects.cards}) {
                ASSERT_GE(box.left, end);
                ASSERT_GE(box.width(), 22);
                ASSERT_GE(box.height(), 19);
                end = box.right;
            }
            ASSERT_LE(end, width);
            ASSERT_GE(scaledForDpi(13.0f, rects.stripDpi), 9.0f) << "legible";
            const int larger = rects.stripDpi + 1;
            ASSERT_TRUE(rects.stripDpi == dpi ||
                        scaledForDpi(542, larger) + scaledForDpi(322, larger) > width);
        }
    }
    displayDpi() = kDesignDpi;
}

TEST(DisplayScale, WindowsShrinkToTheScreen) {
    constexpr WindowDesign kDesign{{720, 735}, {680, 688}};
    const struct {
        int displayDpi;
        Size frame, room;
        int dpi;
        Size outer;
    } cases[] = {{96, {6, 25}, {1920, 735}, 96, {720, 735}},
                 {96, {6, 25}, {1920, 734}, 95, {713, 727}},
                 {144, {8, 36}, {1920, 1080}, 141, {1058, 1080}},
                 {144, {8, 36}, {800, 1080}, 106, {795, 812}},
                 {192, {20, 70}, {1366, 768}, 97, {728, 765}}, // a thick frame
                 {96, {6, 25}, {0, 0}, 48, {360, 369}}};
    for (const auto& each : cases) {
        displayDpi() = each.displayDpi;
        const int dpi = dpiThatFits(kDesign, each.frame, each.room);
        EXPECT_EQ(dpi, each.dpi);
        EXPECT_EQ(outerSize(kDesign, each.frame, dpi), each.outer) << each.dpi;
    }
    displayDpi() = kDesignDpi;
}

TEST(PixelRect, MarginsAndUnionsReachEverySide) {
    constexpr PixelRect kLeft{1, 4, 3, 9}, kRight{2, 5, 8, 6};
    EXPECT_EQ(inflated(kLeft, 2), (PixelRect{-1, 2, 5, 11}));
    EXPECT_EQ(united(kLeft, kRight), (PixelRect{1, 4, 8, 9}));
    EXPECT_EQ(united(kRight, kLeft), (PixelRect{1, 4, 8, 9}));
}

} // namespace
} // namespace percussomatic
