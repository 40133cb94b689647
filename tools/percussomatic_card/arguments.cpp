#include "arguments.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <sstream>

namespace percussomatic::tool {

namespace {

std::string inWords(double value) {
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
        throw Misuse(std::string(option) + " is \"" + text +
                     "\"; expected a whole number of at least 1");
    }
    return value;
}

std::optional<double> Arguments::number(std::string_view option, double lowest,
                                        double highest) const {
    const auto found = options.find(option);
    if (found == options.end()) {
        return {};
    }
    const std::string& text = found->second;
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool within = value >= lowest && value <= highest; // a NaN is not
    if (error != std::errc{} || end != text.data() + text.size() || !within) {
        throw Misuse(std::string(option) + " is \"" + text + "\"; expected a number from " +
                     inWords(lowest) + " to " + inWords(highest));
    }
    return value;
}

Arguments parseArguments(std::span<const std::string> words,
                         std::span<const std::string_view> options) {
    Arguments arguments;
    bool onlyOperands = false;
    for (std::size_t at = 0; at < words.size(); ++at) {
        const std::string& word = words[at];
        if (onlyOperands || !word.starts_with('-') || word == "-") {
            arguments.operands.push_back(word);
        } else if (word == "--") {
            onlyOperands = true;
        } else if (word == "--help" || word == "-h") {
            arguments.helpWanted = true;
        } else {
            const std::size_t equals = word.find('=');
            const std::string name = word.substr(0, equals);
            if (std::ranges::find(options, name) == options.end()) {
                throw Misuse("unknown option " + name);
            }
            if (equals == std::string::npos && at + 1 == words.size()) {
                throw Misuse(name + " needs a value");
            }
            const std::string value =
                equals == std::string::npos ? words[++at] : word.substr(equals + 1);
            if (!arguments.options.emplace(name, value).second) {
                throw Misuse(name + " is given twice");
            }
        }
    }
    return arguments;
}

std::filesystem::path pathOf(std::string_view utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

} // namespace percussomatic::tool
