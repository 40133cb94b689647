#include "cards/card_file.h"

#include "support/own_folder.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#endif

namespace percussomatic {
namespace {

namespace fs = std::filesystem;

class CardFile : public testing::Test {
protected:
    OwnFolder folder;
    const fs::path path = cardFilePath(9);
    const std::string text = writePunchCard({}, 9);
    const std::string old = writePunchCard({}, 0);
};

TEST_F(CardFile, MakesItsFolderAndReplacesWhatIsThere) {
    EXPECT_EQ(path, fs::path("PunchCards") / "card_10.vopcard");
    ASSERT_EQ(saveCardFile(path, old), SaveResult::saved);
    EXPECT_EQ(contents(path), old);
    ASSERT_EQ(saveCardFile(path, text), SaveResult::saved);
    EXPECT_EQ(contents(path), text);
    EXPECT_EQ(filesIn("PunchCards"), 1);
    PunchCard slot;
    EXPECT_TRUE(loadCardFile(path, slot));
    EXPECT_TRUE(slot.used);
    EXPECT_EQ(slot.title, L"PUNCH CARD 10");
}

TEST_F(CardFile, LeavesTheSlotAloneWhenItCannotBeRead) {
    PunchCard slot;
    slot.title = L"MINE";
    slot.pattern.set(2, 3, true);
    const std::string before = writePunchCard(slot, 0);
    fs::create_directories("folder");
    put("short", text.substr(0, text.size() - 2));
    put("number", "_PERCUSSOMATIC_CARD_V4\nTITLE=X\nMASTER_VOLUME=loud\n");
    put("range", "_PERCUSSOMATIC_CARD_V4\nTITLE=X\nMASTER_VOLUME=1e99\n");
    put("huge", "_PERCUSSOMATIC_CARD_V2\nTITLE=" + std::string(3U << 20, 'x'));
    for (const char* file : {"missing", "folder", "short", "number", "range", "huge"}) {
        EXPECT_FALSE(loadCardFile(file, slot)) << file;
        EXPECT_EQ(writePunchCard(slot, 0), before) << file;
        EXPECT_FALSE(slot.used) << file;
    }
}

TEST_F(CardFile, NeverOverwritesWhatIsMarkedReadOnly) {
    ASSERT_EQ(saveCardFile(path, old), SaveResult::saved);
    fs::permissions(path, fs::perms{0222}, fs::perm_options::remove);
    EXPECT_EQ(saveCardFile(path, text), SaveResult::readOnly);
    EXPECT_EQ(contents(path), old);
    EXPECT_EQ(filesIn("PunchCards"), 1);
    EXPECT_NE(saveFaultText(SaveResult::readOnly, path).find(L"card_10.vopcard"),
              std::wstring::npos);
    fs::permissions(path, fs::perms{0222}, fs::perm_options::add);
}

TEST_F(CardFile, SurvivesFilesAndFoldersInItsWay) {
    put("PunchCards", "a file");
    EXPECT_EQ(saveCardFile(path, text), SaveResult::noFolder);
    EXPECT_EQ(contents("PunchCards"), "a file");
    fs::remove("PunchCards");

    fs::create_directories(path); // a folder in the card's place
    EXPECT_EQ(saveCardFile(path, text), SaveResult::notAFile);
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_EQ(filesIn("PunchCards"), 1);
    fs::remove(path);

    // What a saver that died has left where the new text would go first, and folders everywhere.
    put(path, old);
    put("PunchCards/card_10.vopcard.1.saving", "half a ca");
    EXPECT_EQ(saveCardFile(path, text), SaveResult::saved);
    EXPECT_EQ(contents(path), text);
    for (int number = 2; number < 10; ++number) {
        fs::create_directories("PunchCards/card_10.vopcard." + std::to_string(number) + ".saving");
    }
    EXPECT_EQ(saveCardFile(path, old), SaveResult::notWritten);
    EXPECT_EQ(contents(path), text);
    EXPECT_EQ(filesIn("PunchCards"), 10);
}

#ifndef _WIN32
TEST_F(CardFile, KeepsTheLinkToACard) {
    fs::create_directories("PunchCards");
    put("elsewhere", old);
    fs::create_symlink("../elsewhere", path);
    EXPECT_EQ(saveCardFile(path, text), SaveResult::saved);
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(contents("elsewhere"), text);
}

// Nothing can be written beyond so many bytes of a file, as on a disk that has filled up.
TEST_F(CardFile, DiskThatFillsUpAnywhereHarmsNothing) {
    EXPECT_EQ(saveCardFile(path, old), SaveResult::saved);
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (std::size_t bytes = 0; bytes <= text.size(); ++bytes) {
        SCOPED_TRACE(bytes);
        const rlimit limit{static_cast<rlim_t>(bytes), former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const bool fits = bytes == text.size();
        EXPECT_EQ(saveCardFile(path, text), fits ? SaveResult::saved : SaveResult::notWritten);
        EXPECT_EQ(contents(path), fits ? text : old);
        EXPECT_EQ(filesIn("PunchCards"), 1);
    }
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
}

#endif

} // namespace
} // namespace percussomatic
