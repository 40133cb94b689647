#include "cards/card_file.h"

#include "support/own_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#ifndef _WIN32
#include "support/full_disk.h"
#include "support/killed.h"
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
        EXPECT_FALSE(loadCardFile(file, slot) || slot.used) << file;
        EXPECT_EQ(writePunchCard(slot, 0), before) << file;
    }
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

TEST_F(CardFile, SweepTakesOnlyWhatDeadSaversHaveLeft) {
    const auto longAgo = fs::file_time_type::clock::now() - std::chrono::minutes(2);
    const fs::path cards = "PunchCards";
    fs::create_directories(cards / "card_10.vopcard.3.saving/full");
    const std::vector<std::string> gone{"card_10.vopcard.1.saving", "card_10.vopcard.9.saving"};
    const std::vector<std::string> stays{"card_10.vopcard",         "card_10.vopcard.10.saving",
                                         "card_10.vopcard.saving",  "card_10.vopcard.1.saving.txt",
                                         "card_1.vopcard.1.saving", "notes.1.saving"};
    for (const auto& names : {gone, stays}) {
        for (const std::string& name : names) {
            put(cards / name, old);
            fs::last_write_time(cards / name, longAgo);
        }
    }
    put(cards / "card_10.vopcard.2.saving", "half a ca"); // just now
    removeStaleTemporaries(path);
    for (const std::string& name : stays) {
        EXPECT_TRUE(fs::exists(cards / name)) << name;
    }
    EXPECT_TRUE(fs::exists(cards / "card_10.vopcard.2.saving"));
    EXPECT_TRUE(fs::exists(cards / "card_10.vopcard.3.saving/full"));
    EXPECT_EQ(filesIn(cards), std::ssize(stays) + 2);
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

TEST_F(CardFile, DiskThatFillsUpAnywhereHarmsNothing) {
    EXPECT_EQ(saveCardFile(path, old), SaveResult::saved);
    for (std::size_t bytes = 0; bytes <= text.size(); ++bytes) {
        SCOPED_TRACE(bytes);
        const FullDisk disk(bytes);
        const bool fits = bytes == text.size();
        EXPECT_EQ(saveCardFile(path, text), fits ? SaveResult::saved : SaveResult::notWritten);
        EXPECT_EQ(contents(path), fits ? text : old);
        EXPECT_EQ(filesIn("PunchCards"), 1);
    }
}

TEST_F(CardFile, SaverThatIsKilledLeavesTheOldCardOrTheNewOne) {
    const fs::path left = path.string() + ".1.saving";
    int kills = 0, leftBehind = 0;
    for (bool replaced = false, killed = true; killed; kills += killed ? 1 : 0) {
        SCOPED_TRACE(kills);
        if (!replaced) {
            ASSERT_EQ(saveCardFile(path, old), SaveResult::saved);
        }
        killed = killedInCall(kills, [&] { saveCardFile(path, text); });
        replaced = replaced || contents(path) == text;
        ASSERT_EQ(contents(path), replaced ? text : old); // and once replaced it stays so
        if (fs::exists(left)) {
            ++leftBehind;
            removeStaleTemporaries(path);
            ASSERT_TRUE(fs::exists(left)) << "somebody may be writing it";
            fs::last_write_time(left, fs::file_time_type::clock::now() - std::chrono::minutes(2));
            removeStaleTemporaries(path);
        }
        ASSERT_EQ(filesIn("PunchCards"), 1);
    }
    EXPECT_EQ(contents(path), text);
    EXPECT_GT(leftBehind, 3); // created, written, on the disk, about to be renamed
    EXPECT_GT(kills, leftBehind);
}

#endif

} // namespace
} // namespace percussomatic
