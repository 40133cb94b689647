#include "panel/panel_rects.h"

#include "panel/display_scale.h"

#include <gtest/gtest.h>

#include <vector>

namespace percussomatic {
namespace {

// The window on a screen of 1920 x 1080 at full size and at a quarter of it, where the dialog is
// narrower than its three buttons. The reader's card stands between two pixels, once above the
// window's edge and once below.
TEST(PanelRects, StandInTheirPlacesAtEverySize) {
    const struct {
        int width, height;
        double readerCardY;
        std::vector<PixelRect> strip, dialog, buttons, reader;
    } cases[] = {
        {1618,
         1040,
         -438.7,
         {{64, 12, 142, 40},
          {442, 12, 542, 40},
          {1476, 12, 1554, 40},
          {1386, 12, 1464, 40},
          {1296, 12, 1374, 40}},
         {{227, 73, 1391, 967}, {673, 121, 944, 903}, {249, 493, 303, 547}, {1315, 493, 1369, 547}},
         {{661, 925, 753, 955}, {763, 925, 855, 955}, {865, 925, 957, 955}, {1287, 83, 1375, 111}},
         {{1270, 0, 1529, 946}, {1324, -438, 1474, -7}}},
        {404,
         260,
         100.9,
         {{64, 12, 142, 40},
          {442, 12, 542, 40},
          {262, 12, 340, 40},
          {172, 12, 250, 40},
          {82, 12, 160, 40}},
         {{57, 18, 347, 241}, {183, 66, 221, 177}, {79, 102, 133, 156}, {271, 102, 325, 156}},
         {{54, 199, 146, 229}, {156, 199, 248, 229}, {258, 199, 350, 229}, {243, 28, 331, 56}},
         {{317, 0, 381, 236}, {330, 100, 367, 206}}},
    };
    for (const auto& [width, height, readerCardY, strip, dialog, buttons, reader] : cases) {
        SCOPED_TRACE(width);
        const PanelRects at = panelRects(width, height, readerCardY);
        EXPECT_EQ(strip, (std::vector{at.info, at.bpm, at.cards, at.midi, at.effects}));
        EXPECT_EQ(dialog, (std::vector{at.dialog, at.dialogCard, at.previousCard, at.nextCard}));
        EXPECT_EQ(buttons, (std::vector{at.title, at.save, at.load, at.cancel}));
        EXPECT_EQ(reader, (std::vector{at.reader, at.readerCard}));
    }
}

TEST(PanelRects, CardFillsTheDialogByHeightOrByWidth) {
    EXPECT_EQ(panelRects(400, 2000, 0.0).dialogCard, (PixelRect{164, 188, 236, 395})) << "by width";
    EXPECT_EQ(panelRects(676, 1040, 0.0).dialogCard, (PixelRect{203, 121, 473, 897}))
        << "a pixel too narrow for its height";
}

TEST(PanelRects, FixedPixelsGrowWithTheDisplaysDpi) {
    displayDpi() = 144;
    const PanelRects at = panelRects(2427, 1560, 0.0);
    displayDpi() = kDesignDpi;
    EXPECT_EQ(at.bpm, (PixelRect{663, 18, 813, 60}));
    EXPECT_EQ(at.effects, (PixelRect{1944, 18, 2061, 60}));
    EXPECT_EQ(at.previousCard, (PixelRect{373, 738, 454, 820}));
    EXPECT_EQ(at.load, (PixelRect{1297, 1387, 1435, 1432}));
    EXPECT_EQ(at.dialogCard, (PixelRect{1010, 181, 1417, 1354}));
}

} // namespace
} // namespace percussomatic
