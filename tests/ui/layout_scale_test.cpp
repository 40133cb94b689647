#include "ui/layout_scale.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace percussomatic {
namespace {

// In the working directory like the program's own, under a name of each test's.
class LayoutScale : public testing::Test {
protected:
    ~LayoutScale() override { std::filesystem::remove(path_); }

    void write(const std::string& text) const {
        std::ofstream(path_, std::ios::binary | std::ios::trunc) << text;
    }
    std::string read() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::string path_ =
        std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + ".txt";
};

TEST_F(LayoutScale, FileHoldsOneNumberAndAnythingBehindIt) {
    const struct {
        const char* text;
        double scale;
    } cases[] = {
        {"0.850", 0.85}, {"2", 1.0},        {"0.1", 0.25},         {"-3", 0.25}, {"abc", 1.0},
        {"", 1.0},       {"  0.5xyz", 0.5}, {"\n\t5e-1 0.3", 0.5}, {"nan", 1.0}, {"0.6\r\n", 0.6},
    };
    for (const auto& [text, scale] : cases) {
        write(text);
        EXPECT_EQ(readLayoutScale(path_.c_str()), scale) << '"' << text << '"';
    }
    std::filesystem::remove(path_);
    EXPECT_EQ(readLayoutScale(path_.c_str()), 1.0) << "no file";
}

TEST_F(LayoutScale, FileIsReplacedWithThreeDecimalsAndNoLineEnd) {
    write("what was there before");
    writeLayoutScale(path_.c_str(), 0.25);
    EXPECT_EQ(read(), "0.250");
    writeLayoutScale(path_.c_str(), 0.85 + 1e-9);
    EXPECT_EQ(read(), "0.850");
    writeLayoutScale("no such folder/scale.txt", 0.5);
}

TEST_F(LayoutScale, WindowFitsTheScreenWithItsMargin) {
    const struct {
        int screenWidth, screenHeight;
        double scale;
        int width, height;
    } cases[] = {
        {1920, 1080, 1.0, 1618, 1040}, // as high as allowed
        {1920, 1080, 0.25, 405, 260},    {1920, 1080, 0.85, 1376, 884},
        {1080, 1920, 1.0, 1040, 668},    // as wide as allowed
        {20000, 20000, 1.0, 8019, 5153}, // never larger than the artwork
        {100, 100, 1.0, 320, 206},       {100, 100, 0.25, 120, 90},
    };
    for (const auto& [screenWidth, screenHeight, scale, width, height] : cases) {
        const LayoutSize size = initialWindowSize(screenWidth, screenHeight, scale);
        EXPECT_EQ(size.width, width) << screenWidth << " x " << screenHeight << " at " << scale;
        EXPECT_EQ(size.height, height) << screenWidth << " x " << screenHeight << " at " << scale;
    }
}

} // namespace
} // namespace percussomatic
