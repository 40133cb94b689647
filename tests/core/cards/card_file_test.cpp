// SPDX-License-Identifier: MIT
#include "cards/card_file.h"

#include "support/own_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>

#ifndef _WIN32
#include "support/failing_call.h"
#include "support/full_disk.h"
#include "support/killed.h"
#endif

namespace percussomatic {
namespace {

namespace fs = std::filesystem;

struct CardFile : testing::Test {
    static auto longAgo() { return fs::file_time_type::clock::now() - std::chrono::minutes(2); }

    OwnFolder folder;
    const fs::path path = cardFilePath(9);
    const std::string text = writePunchCard({}, 9), old = writePunchCard({}, 0);
};

TEST_F(CardFile, SavingCreatesTheFolderAndReplacesTheFile) {
    EXPECT_EQ(path, fs::path("PunchCards") / "card_10.vopcard");
    for (const std::string& saved : {old, text}) {
        ASSERT_EQ(saveCardFile(path, saved), SaveResult::saved);
        EXPECT_EQ(contents(path), saved);
    }
    EXPECT_EQ(filesIn("PunchCards"), 1);
    PunchCard slot;
    EXPECT_TRUE(loadCardFile(path, slot) && slot.used);
    EXPECT_EQ(slot.title, L"PUNCH CARD 10");
}

TEST_F(CardFile, LoadingABadFileLeavesTheSlotUnchanged) {
    PunchCard slot;
    slot.title = L"MINE";
    slot.pattern.set(2, 3, true);
    const std::string before = writePunchCard(slot, 0);
    fs::create_directories("folder");
    put("short", text.substr(0, text.size() - 2));
    put("number", "_PERCUSSOMATIC_CARD_V4\nTITLE=X\nMASTER_VOLUME=loud\n");
    put("huge", "_PERCUSSOMATIC_CARD_V2\nTITLE=" + std::string(3U << 20, 'x'));
    for (const char* file : {"missing", "folder", "short", "number", "huge"}) {
        EXPECT_FALSE(loadCardFile(file, slot) || slot.used) << file;
        EXPECT_EQ(writePunchCard(slot, 0), before) << file;
    }
}

TEST_F(CardFile, SavingFailsIfItsFileNamesAreTaken) {
    put("PunchCards", "a file");
    EXPECT_EQ(saveCardFile(path, text), SaveResult::noFolder);
    fs::remove("PunchCards");

    fs::create_directories(path); // a folder with the name of the card
    EXPECT_EQ(saveCardFile(path, text), SaveResult::notAFile);
    EXPECT_EQ(filesIn("PunchCards"), 1);
    fs::remove(path);

    // Names of temporary files are taken, first one of them, then all.
    const std::string temporary = path.string() + ".";
    put(temporary + "1.saving", "half a ca");
    EXPECT_EQ(saveCardFile(path, text), SaveResult::saved);
    for (int number = 2; number < 10; ++number) {
        fs::create_directories(temporary + std::to_string(number) + ".saving");
    }
    EXPECT_EQ(saveCardFile(path, old), SaveResult::notWritten);
    EXPECT_EQ(contents(path), text);
    EXPECT_EQ(filesIn("PunchCards"), 10);
}

TEST_F(CardFile, OnlyOldTemporaryFilesOfTheCardAreRemoved) {
    const std::pair<const char*, bool> files[] = {{"", true},           {".1.saving", false},
                                                  {".9.saving", false}, {".10.saving", true},
                                                  {".saving", true},    {".1.saving.txt", true}};
    const std::string card = path.string();
    fs::create_directories(card + ".3.saving/full");
    for (const auto& [suffix, kept] : files) {
        put(card + suffix, old);
        fs::last_write_time(card + suffix, longAgo());
    }
    put(card + ".2.saving", "half a ca"); // recent
    removeStaleTemporaries(path);
    for (const auto& [suffix, kept] : files) {
        EXPECT_EQ(fs::exists(card + suffix), kept) << suffix;
    }
    EXPECT_EQ(filesIn("PunchCards"), 6);
}

#ifndef _WIN32
TEST_F(CardFile, SavingKeepsASymbolicLink) {
    fs::create_directories("PunchCards");
    fs::create_symlink("../elsewhere", path);
    for (const std::string& saved : {old, text}) { // the file does not exist at first
        EXPECT_EQ(saveCardFile(path, saved), SaveResult::saved);
        EXPECT_TRUE(fs::is_symlink(path));
        EXPECT_EQ(contents("elsewhere"), saved);
    }
}

TEST_F(CardFile, LoadingIsRetriedWhileTheFileIsInUse) {
    fs::create_symlink("/proc/self/mem", "card"); // can be opened, but not read
    failingCall() = {};
    failingCall().inPause = [] {
        fs::remove("card");
        put("card", writePunchCard({}, 9));
    };
    PunchCard slot;
    EXPECT_TRUE(loadCardFile("card", slot));
    EXPECT_EQ(std::exchange(failingCall(), {}).pausedMs, 50);
}

TEST_F(CardFile, AnUnreadFileIsNotLostIfASystemCallFails) {
    for (const FailingCall& call : {FailingCall{"fsync", EIO, 1}, FailingCall{"rename", EACCES, 1},
                                    FailingCall{"rename", EACCES, 1, 1}}) {
        fs::create_directory("PunchCards");
        put(path, "unread");
        failingCall() = call;
        CardWriter writer;
        EXPECT_NE(writeCard(writer, {path, text, true}).find(L"written. Any"), std::wstring::npos);
        EXPECT_EQ(contents(path.string() + (call.passes > 0 ? ".unread" : "")), "unread");
        EXPECT_EQ(filesIn("PunchCards"), 1);
        fs::remove_all("PunchCards");
    }
}

TEST_F(CardFile, FailingSystemCallsAreRetriedWhileTheFileIsInUse) {
    constexpr int kAttempts = 8;
    const std::tuple<FailingCall, SaveResult> cases[] = {
        {{"rename", EBUSY, kAttempts - 1}, SaveResult::saved},
        {{"rename", EBUSY, kAttempts}, SaveResult::notWritten},
        {{"rename", EACCES, 1}, SaveResult::notWritten},
        {{"fsync", EIO, 1}, SaveResult::notWritten},
        {{"fsync", EINVAL, 2}, SaveResult::saved}}; // not supported for file and folder
    for (const auto& [call, result] : cases) {
        SCOPED_TRACE(call.name + std::to_string(call.error));
        ASSERT_EQ(saveCardFile(path, old), SaveResult::saved);
        fs::permissions(path, fs::perms{0640});
        failingCall() = call;
        EXPECT_EQ(saveCardFile(path, text), result);
        EXPECT_EQ(failingCall().failures, 0);
        EXPECT_EQ(contents(path), result == SaveResult::saved ? text : old);
        EXPECT_EQ(fs::status(path).permissions(), fs::perms{0640});
        EXPECT_EQ(failingCall().syncedBytes, static_cast<off_t>(text.size()));
        EXPECT_EQ(filesIn("PunchCards"), 1);
        EXPECT_EQ(failingCall().pausedMs, call.error != EBUSY ? 0 : 1080);
    }
    failingCall() = {"unlink", EBUSY, 2};
    FileReplacement(path).write(text);
    EXPECT_EQ(filesIn("PunchCards"), 1);
}

TEST_F(CardFile, AFullDiskLeavesTheOldCardIntact) {
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

TEST_F(CardFile, AKilledSaveLeavesTheOldCardOrTheNewOne) {
    const fs::path left = path.string() + ".1.saving";
    int kills = 0, leftBehind = 0;
    ASSERT_EQ(saveCardFile(path, old), SaveResult::saved);
    for (bool replaced = false; killedInCall(kills, [&] { saveCardFile(path, text); }); ++kills) {
        SCOPED_TRACE(kills);
        replaced = replaced || contents(path) == text;
        ASSERT_EQ(contents(path), replaced ? text : old);
        if (fs::exists(left)) {
            ++leftBehind;
            fs::last_write_time(left, longAgo());
            removeStaleTemporaries(path);
        }
        ASSERT_EQ(filesIn("PunchCards"), 1);
    }
    EXPECT_EQ(contents(path), text);
    EXPECT_GT(leftBehind, 3); // created, written, flushed, before the rename
    EXPECT_GT(kills, leftBehind);
}
#endif

} // namespace
} // namespace percussomatic
