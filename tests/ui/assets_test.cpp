#include "ui/assets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace percussomatic {
namespace {

std::string upperCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

TEST(Assets, TableIsSortedByUpperCasedNameAndLookUpsAreExact) {
    EXPECT_EQ(assetTable().size(), 29u);
    std::string last;
    for (const AssetRow& row : assetTable()) {
        SCOPED_TRACE(row.name);
        EXPECT_LT(last, upperCased(row.name));
        last = upperCased(row.name);
        EXPECT_GT(row.end, row.begin);
        EXPECT_EQ(findAsset(row.name).bytes, row.begin);
        EXPECT_EQ(findAsset(row.name).span().end().base(), row.end);
    }
    for (const char* name : {"BIN_onPNG.png", "BIN_on.PNG", "mobile.PN", "mobile.PNG ", ""}) {
        EXPECT_EQ(findAsset(name).bytes, nullptr) << name;
        EXPECT_EQ(findAsset(name).size, 0u) << name;
    }
}

TEST(Assets, APictureComesInItsSmallestCopyThatIsLargeEnough) {
    const struct {
        const char* name;
        int most, halvings;
    } cases[] = {{"mobile.PNG", 0, 0},   {"mobile.PNG", 1, 1}, {"pannello sotto.PNG", 2, 2},
                 {"c_scheda.PNG", 7, 2}, {"pounch.PNG", 3, 0}, {"nothing.PNG", 2, 0}};
    for (const auto& [name, most, halvings] : cases) {
        const PictureFile found = findPicture(name, most);
        EXPECT_EQ(found.halvings, halvings) << name;
        EXPECT_EQ(found.file.bytes == findAsset(name).bytes, halvings == 0) << name;
    }
}

} // namespace
} // namespace percussomatic
