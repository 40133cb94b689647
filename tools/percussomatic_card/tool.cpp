// SPDX-License-Identifier: MIT
#include "commands.h"

#include "files.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <string_view>

namespace percussomatic::tool {

namespace {

constexpr std::string_view kProgram = "percussomatic-card";
constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

struct Command {
    std::string_view name;
    std::string_view operands;
    std::size_t minOperands, maxOperands;
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
     kUnlimited,
     {},
     "check whether the instrument accepts cards",
     R"(Prints FILE: ok, version N, "TITLE" for each card that the instrument accepts, or
the first error for which it refuses the card. Warnings name values that are read
differently from what is written, and a card that silences the panel; a card with
warnings is still ok.
)",
     check},
    {"show",
     "FILE",
     1,
     1,
     {},
     "print a card in readable form",
     R"(Prints the title, tempo, length, effect and the six lines with their instruments,
volumes and steps. Steps beyond the length are in brackets.
)",
     show},
    {"rewrite",
     "IN OUT",
     2,
     2,
     {},
     "convert a card to version 4",
     R"(Reads a card of any version and writes it as version 4. A card without settings
is given all instruments at full volume, 120 BPM, 16 steps and no effect. IN and OUT
may be the same file.
)",
     rewrite},
    {"render", "CARD OUT.wav", 2, 2, kRenderOptions, "render a card to a WAVE file",
     R"(Plays the card through the instrument's own sound engine: 16-bit stereo at
48000 Hz. The same card always gives exactly the same file.

  --bars N          play the whole length of the card N times (default 4)
  --steps N         play N steps instead of whole bars
  --tail SECONDS    continue after the last step, 0 to 600 seconds (default 2)
  --recordings DIR  take the twelve recordings from a folder
)",
     render},
    {"midi", "CARD OUT.mid", 2, 2, kMidiOptions, "write a card as a Standard MIDI File",
     R"(Type 0, 480 pulses per quarter note. On channel 10 it has a note with the General
MIDI percussion key for each instrument that sounds on a step.

  --bars N          play the whole length of the card N times (default 4)
)",
     midi},
    {"recordings",
     "DIR",
     1,
     1,
     {},
     "write the twelve recordings into a folder",
     R"(Writes the instrument's recordings as WAVE files. The folder is created if it does
not exist.
)",
     recordings},
}};

void printUsage(std::ostream& out) {
    out << "usage: " << kProgram
        << " COMMAND ...\n\nChecks, prints, renders and converts punch cards.\n\n";
    for (const Command& command : kCommands) {
        constexpr std::size_t kColumn = 12;
        out << "  " << command.name << std::string(kColumn - command.name.size(), ' ')
            << command.summary << '\n';
    }
    out << "\n\"" << kProgram
        << " COMMAND --help\" explains a command, --version prints the version.\n"
        << "Exit code: 0 for success, 1 for an invalid card or a file error, 2 for wrong usage.\n";
}

void printHelp(const Command& command, std::ostream& out) {
    out << "usage: " << kProgram << ' ' << command.name
        << (command.options.empty() ? " " : " [OPTION...] ") << command.operands << "\n\n"
        << command.help;
}

int runCommand(const Command& command, std::span<const std::string> words) {
    const Arguments arguments = parseArguments(words, command.options);
    if (arguments.helpRequested) {
        printHelp(command, std::cout);
        return kSuccess;
    }
    if (arguments.operands.size() < command.minOperands ||
        arguments.operands.size() > command.maxOperands) {
        throw UsageError("expected " + std::string(command.operands));
    }
    return command.run(arguments);
}

int reportUsageError(std::string_view where, std::string_view fault) {
    std::cerr << where << ": " << printable(fault) << "\nTry \"" << where << " --help\".\n";
    return kUsageError;
}

int runWords(std::span<const std::string> words) {
    if (words.empty()) {
        return reportUsageError(kProgram, "expected a command");
    }
    if (words.front() == "--help" || words.front() == "-h") {
        printUsage(std::cout);
        return kSuccess;
    }
    if (words.front() == "--version") {
        std::cout << kProgram << " " PERCUSSOMATIC_VERSION "\n";
        return kSuccess;
    }
    const auto* const command = std::ranges::find(kCommands, words.front(), &Command::name);
    if (command == kCommands.end()) {
        return reportUsageError(kProgram, "unknown command " + words.front());
    }
    try {
        return runCommand(*command, words.subspan(1));
    } catch (const UsageError& fault) {
        return reportUsageError(std::string(kProgram) + ' ' + words.front(), fault.what());
    }
}

} // namespace

int runTool(std::span<const std::string> words) {
    try {
        const int code = runWords(words);
        std::cout.flush();
        if (!std::cout) {
            std::cerr << kProgram << ": cannot write to standard output\n";
            return std::max(code, kFailure);
        }
        return code;
    } catch (const std::exception& failure) { // such as std::bad_alloc
        std::cerr << kProgram << ": " << printable(failure.what()) << '\n';
        return kFailure;
    }
}

} // namespace percussomatic::tool
