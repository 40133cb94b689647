// SPDX-License-Identifier: MIT
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
inline constexpr int kSuccess = 0;    // with or without warnings
inline constexpr int kFailure = 1;    // a card is refused, a file cannot be read or written
inline constexpr int kUsageError = 2; // the command line is invalid

// An invalid command line; the text says why.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The words after the command, in UTF-8. Options and operands can be mixed; everything after "--"
// is an operand. Every option has a value: "--bars 2" or "--bars=2".
struct Arguments {
    std::vector<std::string> operands;
    std::map<std::string, std::string, std::less<>> options;
    bool helpRequested = false;

    bool has(std::string_view option) const { return options.contains(option); }

    // The option's value, or nullopt if the option is absent. Both throw UsageError for an invalid
    // value. A count is a whole number of at least 1, saturated at the largest uint64_t.
    std::optional<std::uint64_t> count(std::string_view option) const;
    std::optional<double> number(std::string_view option, double min, double max) const;
};

// Throws UsageError for an unknown or repeated option or one without a value.
Arguments parseArguments(std::span<const std::string> words,
                         std::span<const std::string_view> options);

std::filesystem::path pathFromUtf8(std::string_view utf8);

} // namespace percussomatic::tool
