#include "commands.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <string_view>

namespace percussomatic::tool {

namespace {

constexpr std::string_view kProgram = "percussomatic-card";
constexpr std::size_t kAnyNumber = static_cast<std::size_t>(-1);

struct Command {
    std::string_view name;
    std::string_view operands;
    std::size_t fewest, most; // operands
    std::span<const std::string_view> options;
    std::string_view summary;
    std::string_view help;
    int (*run)(const Arguments&);
};

constexpr std::array<std::string_view, 4> kRenderOptions{"--bars", "--steps", "--tail",
                                                         "--recordings"};
constexpr std::array<std::string_view, 1> kMidiOptions{"--bars"};

constexpr std::array<Command, 6> kCommands{{
    {"check",
     "FILE...",
     1,
     kAnyNumber,
     {},
     "say whether the instrument reads cards",
     R"(Says "FILE: ok, version N, "TITLE"", or the first fault for which the instrument
refuses the card. Warnings name every value that is read as something else than
it says; a card with warnings is still ok.
)",
     check},
    {"show",
     "FILE",
     1,
     1,
     {},
     "print a card for reading",
     R"(Prints title, tempo, length, effect, and the six lines with their instruments,
volumes and steps. Steps beyond the length stand in brackets.
)",
     show},
    {"rewrite",
     "IN OUT",
     2,
     2,
     {},
     "write any card as version 4",
     R"(Reads a card of any version and writes it as version 4. A card without settings
gets all instruments at full volume, 120 BPM, 16 steps and no effect. IN and OUT
may be the same file.
)",
     rewrite},
    {"render", "CARD OUT.wav", 2, 2, kRenderOptions, "play a card into a WAVE file",
     R"(Plays the card through the instrument's own sound engine: 16 bits, stereo,
48000 Hz, the same bytes every time.

  --bars N          so many times its length (4)
  --steps N         so many steps, instead of bars
  --tail SECONDS    goes on after the last step, 0 to 600 (2)
  --recordings DIR  takes the twelve recordings from a folder
)",
     render},
    {"midi", "CARD OUT.mid", 2, 2, kMidiOptions, "write a card as a Standard MIDI File",
     R"(Type 0, 480 pulses per quarter, one note per sounding instrument and step on
channel 10, with the General MIDI percussion keys.

  --bars N          so many times its length (4)
)",
     midi},
    {"recordings",
     "DIR",
     1,
     1,
     {},
     "write the twelve recordings into a folder",
     R"(Writes the instrument's recordings as WAVE files; the folder is made if it is
missing.
)",
     recordings},
}};

void printUsage(std::ostream& out) {
    out << "usage: " << kProgram << " COMMAND ...\n\nLooks after punch cards.\n\n";
    for (const Command& command : kCommands) {
        constexpr std::size_t kColumn = 12;
        out << "  " << command.name << std::string(kColumn - command.name.size(), ' ')
            << command.summary << '\n';
    }
    out << "\n\"" << kProgram << " COMMAND --help\" tells more, --version which this is.\n"
        << "Ends with 0, with 1 when a card or file is at fault, with 2 when misused.\n";
}

void printHelp(const Command& command, std::ostream& out) {
    out << "usage: " << kProgram << ' ' << command.name
        << (command.options.empty() ? " " : " [OPTION...] ") << command.operands << "\n\n"
        << command.help;
}

int runCommand(const Command& command, std::span<const std::string> words) {
    const Arguments arguments = parseArguments(words, command.options);
    if (arguments.helpWanted) {
        printHelp(command, std::cout);
        return kDone;
    }
    if (arguments.operands.size() < command.fewest || arguments.operands.size() > command.most) {
        throw Misuse("expected " + std::string(command.operands));
    }
    return command.run(arguments);
}

int misused(std::string_view where, std::string_view fault) {
    std::cerr << where << ": " << fault << "\nTry \"" << where << " --help\".\n";
    return kMisused;
}

int runWords(std::span<const std::string> words) {
    if (words.empty()) {
        return misused(kProgram, "expected a command");
    }
    if (words.front() == "--help" || words.front() == "-h") {
        printUsage(std::cout);
        return kDone;
    }
    if (words.front() == "--version") {
        std::cout << kProgram << " " PERCUSSOMATIC_VERSION "\n";
        return kDone;
    }
    const auto* const command = std::ranges::find(kCommands, words.front(), &Command::name);
    if (command == kCommands.end()) {
        return misused(kProgram, "unknown command " + words.front());
    }
    try {
        return runCommand(*command, words.subspan(1));
    } catch (const Misuse& fault) {
        return misused(std::string(kProgram) + ' ' + words.front(), fault.what());
    }
}

} // namespace

int runTool(std::span<const std::string> words) {
    try {
        const int code = runWords(words);
        std::cout.flush();
        if (!std::cout) {
            std::cerr << kProgram << ": what it says cannot be written\n";
            return std::max(code, kFailed);
        }
        return code;
    } catch (const std::exception& failure) { // out of memory and the like
        std::cerr << kProgram << ": " << failure.what() << '\n';
        return kFailed;
    }
}

} // namespace percussomatic::tool
