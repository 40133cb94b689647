#include "ui/panel_rects.h"

#include <gtest/gtest.h>

namespace percussomatic {
namespace {

constexpr PixelRect kInfo{64, 12, 142, 40}, kBpm{442, 12, 542, 40};

// The window on a screen of 1920 x 1080 at full size and at a quarter of it, where the dialog is
// narrower than its three buttons. The reader's card stands between two pixels, once above the
// window's edge and once below.
TEST(PanelRects, StandInTheirPlacesAtEverySize) {
    const struct {
        int width, height;
        double readerCardY;
        PixelRect cards, midi, effects;
        PixelRect dialog, previousCard, nextCard;
        PixelRect title, save, load, cancel;
        PixelRect dialogCard, reader, readerCard;
    } cases[] = {
        {.width = 1618,
         .height = 1040,
         .readerCardY = -438.7,
         .cards = {1476, 12, 1554, 40},
         .midi = {1386, 12, 1464, 40},
         .effects = {1296, 12, 1374, 40},
         .dialog = {227, 73, 1391, 967},
         .previousCard = {249, 493, 303, 547},
         .nextCard = {1315, 493, 1369, 547},
         .title = {661, 925, 753, 955},
         .save = {763, 925, 855, 955},
         .load = {865, 925, 957, 955},
         .cancel = {1287, 83, 1375, 111},
         .dialogCard = {673, 121, 944, 903},
         .reader = {1270, 0, 1529, 946},
         .readerCard = {1324, -438, 1474, -7}},
        {.width = 404,
         .height = 260,
         .readerCardY = 100.9,
         .cards = {262, 12, 340, 40},
         .midi = {172, 12, 250, 40},
         .effects = {82, 12, 160, 40},
         .dialog = {57, 18, 347, 241},
         .previousCard = {79, 102, 133, 156},
         .nextCard = {271, 102, 325, 156},
         .title = {54, 199, 146, 229},
         .save = {156, 199, 248, 229},
         .load = {258, 199, 350, 229},
         .cancel = {243, 28, 331, 56},
         .dialogCard = {183, 66, 221, 177},
         .reader = {317, 0, 381, 236},
         .readerCard = {330, 100, 367, 206}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.width);
        const PanelRects rects = panelRects(each.width, each.height, each.readerCardY);
        EXPECT_EQ(rects.info, kInfo);
        EXPECT_EQ(rects.bpm, kBpm);
        EXPECT_EQ(rects.cards, each.cards);
        EXPECT_EQ(rects.midi, each.midi);
        EXPECT_EQ(rects.effects, each.effects);
        EXPECT_EQ(rects.dialog, each.dialog);
        EXPECT_EQ(rects.previousCard, each.previousCard);
        EXPECT_EQ(rects.nextCard, each.nextCard);
        EXPECT_EQ(rects.title, each.title);
        EXPECT_EQ(rects.save, each.save);
        EXPECT_EQ(rects.load, each.load);
        EXPECT_EQ(rects.cancel, each.cancel);
        EXPECT_EQ(rects.dialogCard, each.dialogCard);
        EXPECT_EQ(rects.reader, each.reader);
        EXPECT_EQ(rects.readerCard, each.readerCard);
    }
}

TEST(PanelRects, CardFillsTheDialogByHeightOrByWidth) {
    const struct {
        const char* what;
        int width, height;
        PixelRect dialogCard;
    } cases[] = {
        {"flat: by height", 1600, 200, {790, 62, 810, 122}},
        {"tall: by width", 400, 2000, {164, 188, 236, 395}},
        {"just fits in both", 677, 1040, {203, 121, 474, 903}},
        {"a pixel too narrow for that", 676, 1040, {203, 121, 473, 897}},
    };
    for (const auto& [what, width, height, dialogCard] : cases) {
        EXPECT_EQ(panelRects(width, height, 0.0).dialogCard, dialogCard) << what;
    }
}

} // namespace
} // namespace percussomatic
