// SPDX-License-Identifier: MIT
#include "sequencer/tempo_text.h"

#include "pattern/pattern.h"

#include <cwchar>

namespace percussomatic {

std::optional<double> parseTempo(const std::wstring& text) {
    wchar_t* end = nullptr;
    const double bpm = std::wcstod(text.c_str(), &end);
    const auto parsed = static_cast<std::size_t>(end - text.c_str());
    const bool complete = parsed != 0 && text.find_first_not_of(L' ', parsed) == std::wstring::npos;
    // Written so that a NaN fails as well.
    if (!complete || !(bpm >= kMinBpm && bpm <= kMaxBpm)) {
        return std::nullopt;
    }
    return bpm;
}

} // namespace percussomatic
