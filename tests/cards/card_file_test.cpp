#include "cards/card_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#endif

namespace percussomatic {
namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void put(const fs::path& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string cardCalled(const wchar_t* title) {
    PunchCard card;
    card.title = title;
    return writePunchCard(card, 9);
}

// A working directory of its own, gone afterwards.
class CardFile : public testing::Test {
protected:
    CardFile() {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
        fs::current_path(folder_);
    }
    ~CardFile() override {
        fs::current_path(former_);
        fs::remove_all(folder_);
    }

    static std::set<std::string> filesIn(const fs::path& folder) {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    const fs::path path = cardFilePath(9);
    const std::string text = cardCalled(L"NEW");
    const std::string old = cardCalled(L"OLD");

private:
    const fs::path former_ = fs::current_path();
    const fs::path folder_ =
        former_ / ("card_file_test_" +
                   std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
};

TEST_F(CardFile, MakesItsFolderAndReplacesWhatIsThere) {
    EXPECT_EQ(path, fs::path("PunchCards") / "card_10.vopcard");
    ASSERT_EQ(saveCardFile(path, old), SaveResult::saved);
    EXPECT_EQ(contents(path), old);
    ASSERT_EQ(saveCardFile(path, text), SaveResult::saved);
    EXPECT_EQ(contents(path), text);
    EXPECT_EQ(filesIn("PunchCards"), std::set<std::string>{"card_10.vopcard"});
    PunchCard slot;
    EXPECT_TRUE(loadCardFile(path, slot));
    EXPECT_TRUE(slot.used);
    EXPECT_EQ(slot.title, L"NEW");
}

TEST_F(CardFile, LeavesTheSlotAloneWhenItCannotBeRead) {
    PunchCard slot;
    slot.title = L"MINE";
    slot.pattern.set(2, 3, true);
    const std::string before = writePunchCard(slot, 0);
    fs::create_directories("folder.vopcard");
    put("short.vopcard", text.substr(0, text.size() - 2));
    put("number.vopcard", "_PERCUSSOMATIC_CARD_V4\nTITLE=X\nMASTER_VOLUME=loud\n");
    put("range.vopcard", "_PERCUSSOMATIC_CARD_V4\nTITLE=X\nMASTER_VOLUME=1e99\n");
    put("huge.vopcard", "_PERCUSSOMATIC_CARD_V2\nTITLE=" + std::string(3U << 20, 'x'));
    for (const char* file : {"missing.vopcard", "folder.vopcard", "short.vopcard", "number.vopcard",
                             "range.vopcard", "huge.vopcard"}) {
        EXPECT_FALSE(loadCardFile(file, slot)) << file;
        EXPECT_EQ(writePunchCard(slot, 0), before) << file;
        EXPECT_FALSE(slot.used) << file;
    }
}

TEST_F(CardFile, NeverOverwritesWhatIsMarkedReadOnly) {
    ASSERT_EQ(saveCardFile(path, old), SaveResult::saved);
    constexpr auto kAllWrite =
        fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    fs::permissions(path, kAllWrite, fs::perm_options::remove);
    EXPECT_EQ(saveCardFile(path, text), SaveResult::readOnly);
    EXPECT_EQ(contents(path), old);
    EXPECT_EQ(filesIn("PunchCards").size(), 1u);
    EXPECT_NE(saveFaultText(SaveResult::readOnly, path).find(L"card_10.vopcard"),
              std::wstring::npos);
    fs::permissions(path, kAllWrite, fs::perm_options::add);
}

TEST_F(CardFile, SurvivesFilesAndFoldersInItsWay) {
    put("PunchCards", "a file");
    EXPECT_EQ(saveCardFile(path, text), SaveResult::noFolder);
    EXPECT_EQ(contents("PunchCards"), "a file");
    fs::remove("PunchCards");

    fs::create_directories(path); // a folder in the card's place
    EXPECT_EQ(saveCardFile(path, text), SaveResult::notAFile);
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_EQ(filesIn("PunchCards").size(), 1u);
    fs::remove(path);

    // Folders, or files of a saver that died, where the new text would go first.
    put(path, old);
    fs::create_directories("PunchCards/card_10.vopcard.1.saving");
    put("PunchCards/card_10.vopcard.2.saving", "half a ca");
    EXPECT_EQ(saveCardFile(path, text), SaveResult::saved);
    EXPECT_EQ(contents(path), text);
    EXPECT_EQ(contents("PunchCards/card_10.vopcard.2.saving"), "half a ca");
    for (int number = 3; number < 10; ++number) {
        fs::create_directories("PunchCards/card_10.vopcard." + std::to_string(number) + ".saving");
    }
    EXPECT_EQ(saveCardFile(path, old), SaveResult::notWritten);
    EXPECT_EQ(contents(path), text);
    EXPECT_EQ(filesIn("PunchCards").size(), 10u);
}

#ifndef _WIN32
TEST_F(CardFile, KeepsTheLinkToACard) {
    fs::create_directories("elsewhere");
    fs::create_directories("PunchCards");
    put("elsewhere/card", old);
    fs::create_symlink("../elsewhere/card", path);
    EXPECT_EQ(saveCardFile(path, text), SaveResult::saved);
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(contents("elsewhere/card"), text);
    EXPECT_EQ(filesIn("elsewhere").size(), 1u);
}

// Nothing can be written beyond so many bytes of a file, as on a disk that has filled up.
class FullDisk {
public:
    explicit FullDisk(std::size_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit{static_cast<rlim_t>(bytes), former_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit former_{};
    void (*handler_)(int);
};

TEST_F(CardFile, DiskThatFillsUpAnywhereHarmsNothing) {
    ASSERT_EQ(saveCardFile(path, old), SaveResult::saved);
    for (std::size_t bytes = 0; bytes < text.size(); ++bytes) {
        const FullDisk fullDisk(bytes);
        ASSERT_EQ(saveCardFile(path, text), SaveResult::notWritten) << bytes;
        ASSERT_EQ(contents(path), old) << bytes;
        ASSERT_EQ(filesIn("PunchCards").size(), 1u) << bytes;
    }
    const FullDisk fullDisk(text.size());
    EXPECT_EQ(saveCardFile(path, text), SaveResult::saved);
    EXPECT_EQ(contents(path), text);
}
#endif

} // namespace
} // namespace percussomatic
