#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic::tool {

// Exit codes of every command.
inline constexpr int kDone = 0;    // warnings do not count
inline constexpr int kFailed = 1;  // a card is refused, a file cannot be read or written
inline constexpr int kMisused = 2; // the command line makes no sense

// The player's fault; the text says which.
class Misuse : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What follows a command, in UTF-8, options and operands in any order. "--" makes everything after
// it an operand. Every option has a value, as "--bars 2" or "--bars=2".
struct Arguments {
    std::vector<std::string> operands;
    std::map<std::string, std::string, std::less<>> options;
    bool helpWanted = false;

    bool has(std::string_view option) const { return options.contains(option); }

    // A whole number of at least 1; larger ones than it holds become the largest. Throws Misuse.
    std::optional<std::uint64_t> count(std::string_view option) const;
    std::optional<double> number(std::string_view option, double lowest, double highest) const;
};

// Throws Misuse for an option that is not in the list, comes twice or lacks its value.
Arguments parseArguments(std::span<const std::string> words,
                         std::span<const std::string_view> options);

std::filesystem::path pathOf(std::string_view utf8);

} // namespace percussomatic::tool
