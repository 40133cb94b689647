// SPDX-License-Identifier: MIT
#include "assets/assets.h"
#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "sequencer/sequencer.h"
#include "support/fake_system.h"
#include "support/own_folder.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

namespace percussomatic {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSixLines = "1000100010001000\n0000000000000000\n0000000000000000\n"
                                  "0000000000000000\n0000000000000000\n1010000000000001\n";
const std::string kOldCard = std::string("_PERCUSOMATIC_CARD_V2\nTITLE=\n") + kSixLines;

// Runs the tool in a new folder that contains old.vopcard.
class CardTool : public testing::Test {
protected:
    CardTool() {
        fs::create_directory("work");
        fs::current_path("work");
        put("old.vopcard", kOldCard);
    }

    // Returns the exit code. `prefix` and `suffix` are shell text around the command.
    int run(const std::string& words, const std::string& prefix = "",
            const std::string& suffix = "") {
        const std::string command = prefix + " '" + PERCUSSOMATIC_CARD_TOOL + "' " + words +
                                    " >../tool_out 2>../tool_err " + suffix;
        const int status = std::system(command.c_str());
        out = contents("../tool_out");
        err = contents("../tool_err");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // A suffix that sends a signal as soon as the tool has begun to write a new file.
    static std::string signalWhileWriting(const std::string& file, const std::string& signal) {
        return "& until [ -e " + file + ".1.saving ] || [ -e " + file + " ]; do :; done; kill -" +
               signal + " $!; wait $!";
    }

    const OwnFolder folder;
    std::string out, err;
};

TEST_F(CardTool, WrongUsageExitsWith2AndHelpWith0) {
    for (const char* words :
         {"", "play x", "check", "check --quiet x", "show a b", "recordings", "midi a b --steps 3",
          "midi a b --bars 0", "render a b --bars 2 --steps 2", "render a b --bars 1.5",
          "render a b --bars", "render --bars 1 --bars 2 a b", "render a b --tail nan",
          "render a b --tail 600.1", "render a b --tail -0.1"}) {
        EXPECT_EQ(run(words), 2) << words;
        EXPECT_EQ(out, "") << words;
        EXPECT_NE(err.find("--help"), std::string::npos) << words;
    }
    EXPECT_EQ(filesIn("."), 1);
    for (const char* words : {"--help", "rewrite --help a", "midi a b --help"}) {
        EXPECT_EQ(run(words), 0) << words;
        EXPECT_TRUE(out.starts_with("usage: percussomatic-card")) << words;
    }
}

TEST_F(CardTool, CheckAndShowReportOddAndInvalidCards) {
    put("odd.vopcard",
        "_PERCUSSOMATIC_CARD_V3\nTITLE=NINE\nMASTER_VOLUME=1.5\nTEMPO_NORMALIZED=0.5\n"
        "SEQUENCE_LENGTH=9\nLINE_VOLUMES=1,1,1,1,1,0.5\nINSTRUMENTS=1,1,1,1,1,0,1,1,1,1,1,1\n" +
            std::string(kSixLines));
    put("bad.vopcard", "_PERCUSSOMATIC_CARD_V4\nTITLE=A\nMASTER_VOLUME=\x1B\u009b[2J\n");
    EXPECT_EQ(run("check odd.vopcard old.vopcard"), 0);
    EXPECT_EQ(out, "odd.vopcard: ok, version 3, \"NINE\"\nold.vopcard: ok, version 2, \"\"\n");
    EXPECT_EQ(err,
              "odd.vopcard:3: warning: MASTER_VOLUME is \"1.5\", outside 0 to 1; it becomes 1\n");
    EXPECT_EQ(run("check bad.vopcard old.vopcard 'no\u009b\x1Bne.vopcard'"), 1);
    EXPECT_EQ(out, "old.vopcard: ok, version 2, \"\"\n");
    EXPECT_EQ(err,
              "bad.vopcard:3: MASTER_VOLUME is \"??[2J\", which is not a number; expected a number "
              "from 0 to 1\nno??ne.vopcard: cannot be read; expected a punch card\n");
    for (const char* unwritable : {">&-", ">/dev/full"}) {
        EXPECT_EQ(run("show odd.vopcard", "", unwritable), 1) << unwritable;
    }
    EXPECT_EQ(run("show odd.vopcard"), 0);
    for (const char* piece : {"NINE", "140.0 BPM", "9 steps", "X.X. .... . (... ...X)", "50 %",
                              "Block 1 off; Bass Drum on", "Effect   off, DRUM ROOM"}) {
        EXPECT_NE(out.find(piece), std::string::npos) << piece << '\n' << out;
    }
}

TEST_F(CardTool, RewriteGivesOldCardsDefaultSettings) {
    PunchCard expected = parsePunchCard(kOldCard).value();
    expected.lineVolumes.fill(1.0f);
    expected.instruments.fill(1);
    EXPECT_EQ(run("rewrite old.vopcard old.vopcard"), 0);
    EXPECT_EQ(run("rewrite old.vopcard -"), 0); // a file name like any other
    EXPECT_EQ(run("rewrite -- - --bars"), 0);
    EXPECT_EQ(contents("--bars"), writePunchCard(expected, 0));
}

TEST_F(CardTool, FailedCommandLeavesTheOutputUnchanged) {
    put("out", "precious");
    put("bad.vopcard", "_PERCUSSOMATIC_CARD_V4\n");
    fs::create_symlink("link", "link"); // a circle
    for (const std::string command : {"rewrite", "render", "midi"}) {
        SCOPED_TRACE(command);
        EXPECT_EQ(run(command + " bad.vopcard out"), 1);
        EXPECT_EQ(run(command + " old.vopcard no/folder/out"), 1);
        EXPECT_EQ(run(command + " old.vopcard link"), 1);
        EXPECT_EQ(run(command + " old.vopcard out", "ulimit -f 0;"), 1);
        EXPECT_EQ(contents("out"), "precious");
    }
    // The longest file fails only because the disk is full, a longer one is not begun.
    const std::pair<const char*, const char*> limits[] = {
        {"render old.vopcard out --steps 178956 --tail 0.1211", "cannot be written"},
        {"render old.vopcard out --steps 178956 --tail 0.12111", "4 GiB"},
        {"midi old.vopcard out --bars 139810", "cannot be written"},
        {"midi old.vopcard out --bars 139811", "2 million"}};
    for (const auto& [words, fault] : limits) {
        EXPECT_EQ(run(words, "ulimit -f 100;"), 1);
        EXPECT_NE(err.find(fault), std::string::npos) << words << '\n' << err;
    }
    EXPECT_EQ(run("render old.vopcard out --bars 99999999999999999999"), 1);
    EXPECT_EQ(run("recordings out"), 1);
    fs::create_directories("kit/bass_drum.wav"); // which is written last
    EXPECT_EQ(run("recordings kit"), 1);
    EXPECT_EQ(filesIn("kit"), 1);
    fs::remove("kit/bass_drum.wav");
    EXPECT_EQ(run("recordings kit", "ulimit -f 1000;"), 1);
    EXPECT_TRUE(fs::is_empty("kit"));
    EXPECT_EQ(run("render old.vopcard new --bars 9999", "", signalWhileWriting("new", "TERM")), 1);
    EXPECT_EQ(err, "new: interrupted; the file is not written\n");
    const int code = run("recordings kit", "", signalWhileWriting("kit/rolling_snare.wav", "TERM"));
    EXPECT_EQ(filesIn("kit"), code == 0 ? 12 : 0) << code; // 0 if the signal came too late
    EXPECT_TRUE(contents("out") == "precious" && fs::is_symlink("link"));
    EXPECT_EQ(filesIn("."), 5);
    EXPECT_EQ(run("render old.vopcard new", "trap '' HUP;", signalWhileWriting("new", "HUP")), 0);
}

TEST_F(CardTool, LeftoversOfKilledCommandsAreNamedAndLaterRemoved) {
    const auto forAllLeftovers = [](const auto& action) {
        for (int number = 1; number <= 9; ++number) {
            action("out." + std::to_string(number) + ".saving");
        }
    };
    forAllLeftovers([](const std::string& name) { put(name, ""); });
    EXPECT_EQ(run("rewrite old.vopcard out"), 1);
    EXPECT_NE(err.find("out.1.saving to out.9.saving"), std::string::npos) << err;
    forAllLeftovers([](const std::string& name) {
        fs::last_write_time(name, fs::file_time_type::clock::now() - std::chrono::minutes(2));
    });
    EXPECT_EQ(run("rewrite old.vopcard out"), 0);
    EXPECT_EQ(filesIn("."), 2);
}

TEST_F(CardTool, OutputMustNotBeTheCardItself) {
    fs::create_hard_link("old.vopcard", "same");
    for (const char* words : {"render old.vopcard ./old.vopcard", "midi same old.vopcard"}) {
        EXPECT_EQ(run(words), 2) << words;
        EXPECT_NE(err.find("old.vopcard is the card itself"), std::string::npos) << err;
        EXPECT_EQ(contents("old.vopcard"), kOldCard) << words;
    }
}

// What the instrument plays from a card on its panel, through timed triggers. Missing recordings
// take no sample index, but the sends keep the numbers of their instruments.
std::vector<std::int16_t> instrumentRender(PunchCard card, std::uint32_t steps, double tailSeconds,
                                           const std::vector<std::string_view>& missing = {}) {
    const FreshInstrument instrument;
    SoundEngine& engine = soundEngine();
    engine.prepareForDevice();
    engine.setAutoStop(true, 1e-5f, 100, 50);
    engine.samples.clear();
    for (std::size_t index = 0; index < kInstrumentCount; ++index) {
        const std::string_view name = kInstruments[index].recording;
        const AssetBytes asset = findAsset(name);
        const bool exists = std::ranges::find(missing, name) == missing.end();
        sequencer().sampleIndices[index] = exists ? engine.loadSample(asset.bytes, asset.size) : -1;
    }
    const bool rhythmOnly = !card.hasSettings;
    if (rhythmOnly) {
        card.hasSettings = true;
        card.lineVolumes.fill(1.0f);
        card.instruments.fill(1);
    }
    applyCard(card);
    sequencer().pattern = card.pattern;
    const double stepFrames = 48000.0 * 60.0 / ((rhythmOnly ? 120.0 : sequencer().bpm) * 4.0);
    const auto startOf = [=](std::uint32_t step) {
        return static_cast<std::size_t>(std::floor(step * stepFrames));
    };
    const auto end = startOf(steps) + static_cast<std::size_t>(std::floor(tailSeconds * 48000.0));
    // In the blocks of a device, each step triggered one block before it is due. The instrument
    // rounds to the nearest frame, the tool downwards: half a frame of 20833 ns in between.
    std::vector<std::int16_t> out(2 * end + 2 * std::size_t{kDeviceBufferFrames});
    constexpr std::int64_t kHalfFrameNs = 10'416;
    std::uint32_t step = 0;
    for (std::size_t frame = 0; frame < end; frame += kDeviceBufferFrames) {
        for (; step < steps && startOf(step) < frame + 2 * kDeviceBufferFrames; ++step) {
            const auto dueNs = static_cast<std::int64_t>(step * stepFrames * 1e9 / 48000.0);
            triggerStep(step % card.sequenceLength, dueNs);
        }
        engine.renderTimedBlock(out.data() + 2 * frame, kDeviceBufferFrames,
                                {kHalfFrameNs, static_cast<std::int64_t>(frame)});
    }
    out.resize(2 * end);
    return out;
}

void expectWave(const fs::path& path, const std::vector<std::int16_t>& samples) {
    Bytes expected = WaveBuilder().format({.channels = 2}).values16(samples).bytes();
    const auto riffSize = static_cast<std::uint32_t>(36 + 2 * samples.size());
    std::memcpy(&expected[4], &riffSize, 4);
    EXPECT_TRUE(toBytes(contents(path)) == expected);
}

TEST_F(CardTool, FactoryCardsAreValidAndRenderAsTheInstrumentPlaysThem) {
    int cards = 0;
    for (const auto& entry : fs::directory_iterator(PERCUSSOMATIC_CARDS_DIR)) {
        if (entry.path().extension() != ".vopcard") {
            continue;
        }
        ++cards;
        const std::string path = "'" + entry.path().string() + "'";
        SCOPED_TRACE(path);
        EXPECT_EQ(run("check " + path), 0);
        EXPECT_EQ(err, "");
        const PunchCard card = parsePunchCard(contents(entry.path())).value();
        ASSERT_EQ(run("render --tail 0.3 " + path + " o.wav --bars=1"), 0) << err;
        EXPECT_EQ(err, "");
        const std::vector<std::int16_t> expected = instrumentRender(card, card.sequenceLength, 0.3);
        expectWave("o.wav", expected);
        const auto clipped =
            std::ranges::count_if(expected, [](int value) { return std::abs(value) == 32767; });
        EXPECT_LE(clipped, std::ssize(expected) / 1000);
        EXPECT_GT(std::ranges::max(expected), 3276);
    }
    EXPECT_EQ(cards, 10);
}

TEST_F(CardTool, OddCardsRenderAsTheInstrumentPlaysThem) {
    PunchCard card = parsePunchCard(kOldCard).value();
    ASSERT_EQ(run("render old.vopcard o.wav"), 0);
    expectWave("o.wav", instrumentRender(card, 64, 2.0));

    card.hasSettings = true;
    card.sequenceLength = 5;
    card.tempo = 0.123457f;
    card.masterVolume = 0.7f;
    card.lineVolumes = {0.5f, 1.0f, 0.0f, 0.25f, 0.00077f, 0.75f};
    card.instruments.fill(1);
    card.pattern.steps.fill(1);
    card.effectEnabled = true;
    card.effectPreset = 99;
    card.effectSends = {1.0f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.0f, 0.8f, 0.9f, 0.1f, 0.15f, 0.25f};
    card.effect.effectReturn = 3.0f;
    card.effect.preDelayMs = 250.0f;
    put("odd.vopcard", writePunchCard(card, 0));
    card = parsePunchCard(contents("odd.vopcard")).value();
    EXPECT_EQ(run("show odd.vopcard"), 0);
    for (const char* piece : {"\nEffect   STADIUM, return 100 %", "width 92 %, pre-delay 200 ms\n",
                              "Cymbal 2 on, send 20 %; Snare on, send 80 %\n"}) {
        EXPECT_NE(out.find(piece), std::string::npos) << piece << '\n' << out;
    }
    ASSERT_EQ(run("recordings made/kit"), 0);
    ASSERT_EQ(run("render odd.vopcard o.wav --recordings made/kit --steps 13 --tail 0"), 0);
    EXPECT_EQ(err, "");
    expectWave("o.wav", instrumentRender(card, 13, 0.0));

    // Two missing or damaged recordings, then a pipe, an endless one and a large one.
    for (const char* name : {"snare", "block_1", "block_2"}) {
        fs::remove("made/kit/" + std::string(name) + ".wav");
    }
    put("made/kit/clave.wav", "RIFF");
    ASSERT_EQ(mkfifo("made/kit/block_1.wav", 0600), 0);
    fs::create_symlink("/dev/zero", "made/kit/block_2.wav");
    fs::resize_file("made/kit/triangle.wav", (32U << 20) + 1);
    const std::string words = "render odd.vopcard o.wav --recordings made/kit --steps 3";
    ASSERT_EQ(run(words, "timeout 30"), 0); // instead of waiting for the pipe
    EXPECT_EQ(std::ranges::count(err, '\n'), 5) << err;
    EXPECT_NE(err.find("snare.wav: warning: cannot be read: No such file"), std::string::npos);
    ASSERT_EQ(run(words, "", "2>&-"), 0);
    EXPECT_EQ(run("render odd.vopcard o.wav --recordings made"), 1);
    EXPECT_EQ(run("render odd.vopcard o.wav --recordings kit"), 1);
    EXPECT_EQ(err, "kit: No such file or directory; expected a folder with recordings\n");
    expectWave("o.wav", instrumentRender(card, 3, 2.0,
                                         {"snare.wav", "clave.wav", "block_1.wav", "block_2.wav",
                                          "triangle.wav"}));
}

} // namespace
} // namespace percussomatic
