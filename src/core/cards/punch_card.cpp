// SPDX-License-Identifier: MIT
#include "cards/punch_card.h"

#include "cards/card_text.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace percussomatic {

namespace {

constexpr std::string_view kMagic = "_PERCUSSOMATIC_CARD_V";
constexpr std::string_view kMisspeltMagic = "_PERCUSOMATIC_CARD_V"; // of some old cards

constexpr std::string_view kTitleKey = "TITLE=";
constexpr std::string_view kMasterVolumeKey = "MASTER_VOLUME=";
constexpr std::string_view kTempoKey = "TEMPO_NORMALIZED=";
constexpr std::string_view kSequenceLengthKey = "SEQUENCE_LENGTH=";
constexpr std::string_view kLineVolumesKey = "LINE_VOLUMES=";
constexpr std::string_view kInstrumentsKey = "INSTRUMENTS=";
constexpr std::string_view kEffectEnabledKey = "EFFECT_ENABLED=";
constexpr std::string_view kEffectPresetKey = "EFFECT_PRESET=";
constexpr std::string_view kEffectSendsKey = "EFFECT_SENDS=";

// In the order of kEffectLimits. Values are kept as read and clamped when the card is applied.
constexpr std::array<std::string_view, kEffectLimits.size()> kEffectKeys{
    "EFFECT_RETURN=", "EFFECT_ROOM_SIZE=", "EFFECT_DAMPING=", "EFFECT_WIDTH=",
    "EFFECT_PREDELAY_MS="};

constexpr std::int32_t kMaxPreset = 3;
constexpr std::string_view kLengthsInWords = "5, 6, 9, 10, 12, 15 or 16";

// The key without its equals sign.
std::string_view nameOf(std::string_view key) {
    return key.substr(0, key.size() - 1);
}

int versionOf(std::string_view magic) {
    for (const std::string_view spelling : {kMagic, kMisspeltMagic}) {
        if (magic.size() == spelling.size() + 1 && magic.starts_with(spelling) &&
            magic.back() >= '1' && magic.back() <= '4') {
            return magic.back() - '0';
        }
    }
    return 0;
}

// What is wrong with a first line that an editor has damaged in one of the two commonest ways;
// empty if something else is wrong.
std::string_view damageOf(std::string_view magic) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    const bool marked = magic.starts_with(kByteOrderMark);
    magic.remove_prefix(marked ? kByteOrderMark.size() : 0);
    const bool windowsLines = magic.ends_with('\r');
    magic.remove_suffix(windowsLines ? 1 : 0);
    if (versionOf(magic) == 0) {
        return {};
    }
    if (marked && windowsLines) {
        return "the file begins with a byte order mark and has Windows line ends (CR LF); expected "
               "UTF-8 without the mark and lines that end with LF alone";
    }
    return marked ? "the file begins with a byte order mark; expected UTF-8 without it"
                  : "the file has Windows line ends (CR LF); expected lines that end with LF alone";
}

std::vector<std::string_view> splitAtCommas(std::string_view text) {
    std::vector<std::string_view> fields;
    for (std::size_t comma = 0; comma != std::string_view::npos;) {
        comma = text.find(',');
        fields.push_back(text.substr(0, comma));
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    return fields;
}

std::string shortest(float value) {
    std::string digits = sixDecimals(value);
    if (digits.find('.') != std::string::npos) {
        digits.erase(digits.find_last_not_of('0') + 1);
    }
    if (digits.ends_with('.')) {
        digits.pop_back();
    }
    return digits;
}

std::string fieldName(std::string_view key, std::size_t field) {
    return "field " + std::to_string(field + 1) + " of " + std::string(nameOf(key));
}

struct CardRefused {};

// Reads one card. A fault is written to the report and thrown, either as CardRefused or as the
// conversion error of a number.
class CardReader {
public:
    CardReader(std::string_view bytes, CardReport& report) : rest_(bytes), report_(report) {}

    PunchCard read();

private:
    [[noreturn]] void refuse(std::string text) {
        report_.fault = {line_, std::move(text)};
        throw CardRefused{};
    }
    void warn(std::string text) { report_.warnings.push_back({line_, std::move(text)}); }

    std::string_view nextLine(std::string_view expected);
    std::string_view valueOf(std::string_view key);
    template <typename Value>
    Value number(ReadNumber<Value> (*convert)(std::string_view), std::string_view name,
                 std::string_view text, std::string_view expected);
    void warnIfNaN(std::string_view name, float value);

    std::wstring readTitle();
    float unit(std::string_view name, std::string_view text);
    template <std::size_t Count>
    std::array<std::string_view, Count> fieldsOf(std::string_view key);
    template <std::size_t Count>
    std::array<float, Count> units(std::string_view key);
    std::uint32_t readLength();
    std::array<std::uint8_t, kInstrumentCount> readInstruments();
    void warnIfSilencing(const PunchCard& card);
    void readEffect(PunchCard& card);
    void readPatternLine(Pattern& pattern, int line);

    std::string_view rest_;
    CardReport& report_;
    int line_ = 0;
};

// Without its line feed, which the last line may lack.
std::string_view CardReader::nextLine(std::string_view expected) {
    ++line_;
    if (rest_.empty()) {
        refuse("the card ends here; expected " + std::string(expected));
    }
    const std::size_t end = rest_.find('\n');
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return line;
}

std::string_view CardReader::valueOf(std::string_view key) {
    const std::string_view line = nextLine(key);
    if (!line.starts_with(key)) {
        refuse("this line is " + quoted(line) + "; expected " + std::string(key));
    }
    return line.substr(key.size());
}

template <typename Value>
Value CardReader::number(ReadNumber<Value> (*convert)(std::string_view), std::string_view name,
                         std::string_view text, std::string_view expected) {
    const auto noteFault = [&](const char* problem) {
        report_.fault = {line_, std::string(name) + " is " + quoted(text) + problem +
                                    "; expected " + std::string(expected)};
    };
    try {
        const auto [value, length] = convert(text);
        if (text.find_first_not_of(" \t\r", length) != std::string_view::npos) {
            warn(std::string(name) + " is " + quoted(text) + "; only " +
                 quoted(text.substr(0, length)) + " is read");
        }
        return value;
    } catch (const std::invalid_argument&) {
        noteFault(", which is not a number");
        throw;
    } catch (const std::out_of_range&) {
        noteFault(", which is out of range");
        throw;
    }
}

void CardReader::warnIfNaN(std::string_view name, float value) {
    if (std::isnan(value)) {
        warn(std::string(name) + " is not a number; it counts as 0");
    }
}

std::wstring CardReader::readTitle() {
    const std::string_view line = nextLine(kTitleKey);
    if (!line.starts_with(kTitleKey)) {
        warn("this line is " + quoted(line) + ", not " + std::string(kTitleKey) +
             "; the title is left empty");
        return {};
    }
    const auto title = wideFromUtf8(line.substr(kTitleKey.size()));
    if (!title) {
        warn("the title is not UTF-8; it is left empty");
    }
    return title.value_or(std::wstring());
}

// Like std::clamp, the card keeps a NaN and the sign of a zero.
float CardReader::unit(std::string_view name, std::string_view text) {
    const float asWritten = number(readFloat, name, text, "a number from 0 to 1");
    const float value = std::clamp(asWritten, 0.0f, 1.0f);
    if (value < asWritten || value > asWritten) {
        warn(std::string(name) + " is " + quoted(text) + ", outside 0 to 1; it becomes " +
             shortest(value));
    }
    warnIfNaN(name, value);
    return value;
}

template <std::size_t Count>
std::array<std::string_view, Count> CardReader::fieldsOf(std::string_view key) {
    const std::vector<std::string_view> fields = splitAtCommas(valueOf(key));
    if (fields.size() != Count) {
        refuse(std::string(nameOf(key)) + " has " + std::to_string(fields.size()) +
               " fields between its commas; expected " + std::to_string(Count));
    }
    std::array<std::string_view, Count> all;
    std::ranges::copy(fields, all.begin());
    return all;
}

template <std::size_t Count>
std::array<float, Count> CardReader::units(std::string_view key) {
    const auto fields = fieldsOf<Count>(key);
    std::array<float, Count> values{};
    for (std::size_t field = 0; field < Count; ++field) {
        values[field] = unit(fieldName(key, field), fields[field]);
    }
    return values;
}

std::uint32_t CardReader::readLength() {
    const std::string_view text = valueOf(kSequenceLengthKey);
    const std::uint32_t asWritten =
        number(readUnsigned, nameOf(kSequenceLengthKey), text, kLengthsInWords);
    const std::uint32_t length = supportedLength(asWritten);
    const bool wrapped = text.find('-') < text.find_first_of("0123456789"); // modulo 2^32
    if (length != asWritten || wrapped) {
        warn("SEQUENCE_LENGTH is " + quoted(text) + ", not " + std::string(kLengthsInWords) +
             "; it becomes " + std::to_string(length));
    }
    return length;
}

std::array<std::uint8_t, kInstrumentCount> CardReader::readInstruments() {
    const auto fields = fieldsOf<kInstrumentCount>(kInstrumentsKey);
    std::array<std::uint8_t, kInstrumentCount> on{};
    for (std::size_t field = 0; field < on.size(); ++field) {
        on[field] = fields[field] == "1" ? 1 : 0;
        if (on[field] == 0 && fields[field] != "0") {
            warn(fieldName(kInstrumentsKey, field) + " is " + quoted(fields[field]) +
                 ", neither 0 nor 1; the instrument is switched off");
        }
    }
    return on;
}

// Such settings come from changing the title of a card that has none.
void CardReader::warnIfSilencing(const PunchCard& card) {
    const auto isOn = [](auto value) { return value > 0; };
    if (std::ranges::none_of(card.lineVolumes, isOn) &&
        std::ranges::none_of(card.instruments, isOn)) {
        warn("all instruments are off and all line volumes are 0; loading the card silences the "
             "panel");
    }
}

void CardReader::readEffect(PunchCard& card) {
    const std::int32_t enabled =
        number(readInteger, nameOf(kEffectEnabledKey), valueOf(kEffectEnabledKey), "0 or 1");
    card.effectEnabled = enabled != 0;
    if (enabled != 0 && enabled != 1) {
        warn("EFFECT_ENABLED is " + std::to_string(enabled) + "; it becomes 1");
    }
    card.effectPreset =
        number(readInteger, nameOf(kEffectPresetKey), valueOf(kEffectPresetKey), "0 to 3");
    if (card.effectPreset < 0 || card.effectPreset > kMaxPreset) {
        warn("EFFECT_PRESET is " + std::to_string(card.effectPreset) +
             ", outside 0 to 3; it counts as " +
             std::to_string(std::clamp(card.effectPreset, 0, kMaxPreset)));
    }
    for (std::size_t i = 0; i < kEffectKeys.size(); ++i) {
        const std::string_view key = kEffectKeys[i], text = valueOf(key);
        const EffectLimit& limit = kEffectLimits[i];
        const std::string range = "0 to " + shortest(limit.max);
        const float value = number(readFloat, nameOf(key), text, "a number from " + range);
        card.effect.*limit.value = value;
        if (value < 0.0f || value > limit.max) {
            warn(std::string(nameOf(key)) + " is " + quoted(text) + ", outside " + range +
                 "; it counts as " + shortest(std::clamp(value, 0.0f, limit.max)));
        }
        warnIfNaN(nameOf(key), value);
    }
    card.effectSends = units<kInstrumentCount>(kEffectSendsKey);
}

void CardReader::readPatternLine(Pattern& pattern, int line) {
    const std::string name = "pattern line " + std::to_string(line + 1);
    const std::string_view text = nextLine(name + " of 16 steps");
    if (text.size() < kStepCount) {
        refuse(name + " has " + std::to_string(text.size()) + " steps; expected 16");
    }
    const std::string_view steps = text.substr(0, kStepCount);
    for (int step = 0; step < kStepCount; ++step) {
        pattern.set(line, step, steps[static_cast<std::size_t>(step)] == '1');
    }
    if (steps.find_first_not_of("01") != std::string_view::npos) {
        warn(name + " is " + quoted(steps) + "; every step that is neither 0 nor 1 is off");
    }
    if (text.find_first_not_of(" \t\r", kStepCount) != std::string_view::npos) {
        warn(name + " continues after 16 steps; the rest is ignored");
    }
}

PunchCard CardReader::read() {
    constexpr std::string_view kFirstLine = "_PERCUSSOMATIC_CARD_V1 to _PERCUSSOMATIC_CARD_V4";
    const std::string_view magic = nextLine(kFirstLine);
    report_.version = versionOf(magic);
    if (report_.version == 0) {
        const std::string_view damage = damageOf(magic);
        refuse(!damage.empty() ? std::string(damage)
                               : "the first line is " + quoted(magic) + "; expected " +
                                     std::string(kFirstLine) + " and nothing else");
    }

    PunchCard card;
    card.used = true;
    if (report_.version >= 2) {
        card.title = readTitle();
    }
    if (report_.version >= 3) {
        card.hasSettings = true;
        card.masterVolume = unit(nameOf(kMasterVolumeKey), valueOf(kMasterVolumeKey));
        card.tempo = unit(nameOf(kTempoKey), valueOf(kTempoKey));
        card.sequenceLength = readLength();
        card.lineVolumes = units<kLineCount>(kLineVolumesKey);
        card.instruments = readInstruments();
        warnIfSilencing(card);
    }
    if (report_.version >= 4) {
        readEffect(card);
    }
    for (int line = 0; line < kLineCount; ++line) {
        readPatternLine(card.pattern, line);
    }
    if (rest_.find_first_not_of('\n') != std::string_view::npos) {
        ++line_;
        warn("everything from here on is ignored");
    }
    return card;
}

void appendLine(std::string& text, std::string_view key, std::string_view value) {
    text.append(key).append(value) += '\n';
}

template <std::size_t Count, typename Value, typename Format>
std::string withCommas(const std::array<Value, Count>& values, const Format& format) {
    std::string text;
    for (const Value& value : values) {
        text.append(text.empty() ? "" : ",").append(format(value));
    }
    return text;
}

std::string flag(std::uint8_t on) {
    return on != 0 ? "1" : "0";
}

} // namespace

std::wstring defaultCardLabel(int slot) {
    const std::wstring number = std::to_wstring(slot + 1);
    return L"PUNCH CARD " + (number.size() < 2 ? L"0" + number : number);
}

std::wstring cardLabel(const PunchCard& card, int slot) {
    return card.title.empty() ? defaultCardLabel(slot) : card.title;
}

std::optional<PunchCard> parsePunchCard(std::string_view bytes, CardReport* report) {
    CardReport unread;
    try {
        return CardReader(bytes, report != nullptr ? *report : unread).read();
    } catch (const CardRefused&) {
        return std::nullopt;
    }
}

std::string writePunchCard(const PunchCard& card, int slot) {
    std::wstring title = cardLabel(card, slot);
    std::ranges::replace(title, L'\n', L' '); // a line feed would end the title line
    std::string text;
    appendLine(text, kMagic, "4");
    appendLine(text, kTitleKey, utf8FromWide(title));
    appendLine(text, kMasterVolumeKey, sixDecimals(card.masterVolume));
    appendLine(text, kTempoKey, sixDecimals(card.tempo));
    appendLine(text, kSequenceLengthKey, std::to_string(card.sequenceLength));
    appendLine(text, kLineVolumesKey, withCommas(card.lineVolumes, sixDecimals));
    appendLine(text, kInstrumentsKey, withCommas(card.instruments, flag));
    appendLine(text, kEffectEnabledKey, flag(card.effectEnabled ? 1 : 0));
    appendLine(text, kEffectPresetKey, std::to_string(card.effectPreset));
    for (std::size_t i = 0; i < kEffectKeys.size(); ++i) {
        appendLine(text, kEffectKeys[i], sixDecimals(card.effect.*kEffectLimits[i].value));
    }
    appendLine(text, kEffectSendsKey, withCommas(card.effectSends, sixDecimals));
    for (int line = 0; line < kLineCount; ++line) {
        std::string steps;
        for (int step = 0; step < kStepCount; ++step) {
            steps += card.pattern.isSet(line, step) ? '1' : '0';
        }
        appendLine(text, "", steps);
    }
    return text;
}

} // namespace percussomatic
