#include "panel/layout_scale.h"

#include "support/own_folder.h"

#include <gtest/gtest.h>

#include <utility>

namespace percussomatic {
namespace {

TEST(LayoutScale, FileHoldsOneNumberAndAnythingBehindIt) {
    const OwnFolder folder;
    const std::pair<const char*, double> cases[] = {
        {"0.850", 0.85}, {"2", 1.0},        {"0.24", 0.25},        {"-3", 0.25}, {"abc", 1.0},
        {"", 1.0},       {"  0.5xyz", 0.5}, {"\n\t5e-1 0.3", 0.5}, {"nan", 1.0}, {"0.6\r\n", 0.6}};
    for (const auto& [text, scale] : cases) {
        put("scale.txt", text);
        EXPECT_EQ(readLayoutScale("scale.txt"), scale) << '"' << text << '"';
    }
    std::filesystem::remove("scale.txt");
    EXPECT_EQ(readLayoutScale("scale.txt"), 1.0) << "no file";
}

TEST(LayoutScale, FileIsReplacedWithThreeDecimalsAndNoLineEnd) {
    const OwnFolder folder;
    put("scale.txt", "what was there before");
    writeLayoutScale("scale.txt", 0.85 + 1e-9);
    EXPECT_EQ(contents("scale.txt"), "0.850");
    writeLayoutScale("no such folder/scale.txt", 0.5);
}

TEST(LayoutScale, WindowFitsTheScreenWithItsMargin) {
    const auto expectSize = [](int screenWidth, int screenHeight, double scale, int width,
                               int height) {
        const Size size = initialWindowSize(screenWidth, screenHeight, scale);
        EXPECT_EQ(std::pair(size.width, size.height), std::pair(width, height));
    };
    expectSize(1920, 1080, 1.0, 1618, 1040); // as high as allowed
    expectSize(1920, 1080, 0.85, 1376, 884);
    expectSize(1080, 1920, 1.0, 1040, 668);    // as wide as allowed
    expectSize(20000, 20000, 1.0, 8019, 5153); // never larger than the artwork
    expectSize(100, 100, 1.0, 320, 206);
    expectSize(100, 100, 0.25, 120, 90);
}

} // namespace
} // namespace percussomatic
