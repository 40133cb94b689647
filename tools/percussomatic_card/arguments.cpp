// SPDX-License-Identifier: MIT
#include "arguments.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <sstream>

namespace percussomatic::tool {

namespace {

std::string numberText(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

} // namespace

std::optional<std::uint64_t> Arguments::count(std::string_view option) const {
    const auto found = options.find(option);
    if (found == options.end()) {
        return {};
    }
    const std::string& text = found->second;
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        value = std::numeric_limits<std::uint64_t>::max();
    }
    if (error == std::errc::invalid_argument || end != text.data() + text.size() || value < 1) {
        throw UsageError(std::string(option) + " is \"" + text +
                         "\"; expected a whole number of at least 1");
    }
    return value;
}

std::optional<double> Arguments::number(std::string_view option, double min, double max) const {
    const auto found = options.find(option);
    if (found == options.end()) {
        return {};
    }
    const std::string& text = found->second;
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool withinRange = value >= min && value <= max; // false for NaN
    if (error != std::errc{} || end != text.data() + text.size() || !withinRange) {
        throw UsageError(std::string(option) + " is \"" + text + "\"; expected a number from " +
                         numberText(min) + " to " + numberText(max));
    }
    return value;
}

Arguments parseArguments(std::span<const std::string> words,
                         std::span<const std::string_view> options) {
    Arguments arguments;
    bool optionsEnded = false;
    for (std::size_t at = 0; at < words.size(); ++at) {
        const std::string& word = words[at];
        if (optionsEnded || !word.starts_with('-') || word == "-") {
            arguments.operands.push_back(word);
        } else if (word == "--") {
            optionsEnded = true;
        } else if (word == "--help" || word == "-h") {
            arguments.helpRequested = true;
        } else {
            const std::size_t equals = word.find('=');
            const std::string name = word.substr(0, equals);
            if (std::ranges::find(options, name) == options.end()) {
                throw UsageError("unknown option " + name);
            }
            if (equals == std::string::npos && at + 1 == words.size()) {
                throw UsageError(name + " needs a value");
            }
            const std::string value =
                equals == std::string::npos ? words[++at] : word.substr(equals + 1);
            if (!arguments.options.emplace(name, value).second) {
                throw UsageError(name + " is given twice");
            }
        }
    }
    return arguments;
}

std::filesystem::path pathFromUtf8(std::string_view utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

} // namespace percussomatic::tool
