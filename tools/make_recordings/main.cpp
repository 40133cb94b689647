// SPDX-License-Identifier: MIT
// make_recordings OUT_FOLDER [NAME...]: synthesises the instrument's recordings, all
// twelve or only those named, and writes them as WAVE files. The same build of the tool
// always writes the same bytes.

#include "finishing.h"
#include "voices.h"
#include "wave_file.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace {

using recordings::Voice;

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

bool writeRecording(const Voice& voice, const std::filesystem::path& folder) {
    const std::filesystem::path path = folder / (std::string(voice.name) + ".wav");
    recordings::Sound sound = voice.render(recordings::framesIn(voice.soundingMs));
    if (!recordings::writeWaveFile(
            path, recordings::finish(std::move(sound), voice.finish, voice.fileFrames))) {
        std::cerr << "make_recordings: cannot write " << path << '\n';
        return false;
    }
    return true;
}

// All voices if no name is given. Returns an empty vector if a name is unknown.
std::vector<Voice> selectVoices(const std::vector<std::string>& names) {
    const auto all = recordings::voices();
    if (names.empty()) {
        return {all.begin(), all.end()};
    }
    std::vector<Voice> selected;
    for (const std::string& name : names) {
        const auto found = std::ranges::find(all, name, &Voice::name);
        if (found == all.end()) {
            std::cerr << "make_recordings: unknown recording \"" << name << "\"\n";
            return {};
        }
        selected.push_back(*found);
    }
    return selected;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty()) {
        std::cerr << "usage: make_recordings OUT_FOLDER [NAME...]\n";
        return kExitUsage;
    }
    const std::vector<Voice> selected = selectVoices({arguments.begin() + 1, arguments.end()});
    if (selected.empty()) {
        return kExitUsage;
    }

    const std::filesystem::path folder = arguments.front();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        std::cerr << "make_recordings: " << folder << ": " << error.message() << '\n';
        return kExitFailure;
    }
    const bool written = std::ranges::all_of(
        selected, [&](const Voice& voice) { return writeRecording(voice, folder); });
    return written ? 0 : kExitFailure;
}
