// make_recordings OUT_FOLDER [name...]: renders the instrument's recordings, all
// twelve or the named ones, into WAVE files. The same build of the tool writes the
// same bytes every time.

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

constexpr int kFailed = 1;
constexpr int kMisused = 2;

bool render(const Voice& voice, const std::filesystem::path& folder) {
    const std::filesystem::path path = folder / (std::string(voice.name) + ".wav");
    recordings::Sound sound = voice.render(recordings::framesIn(voice.soundingMs));
    if (!recordings::writeWaveFile(
            path, recordings::finish(std::move(sound), voice.finish, voice.fileFrames))) {
        std::cerr << "make_recordings: cannot write " << path << '\n';
        return false;
    }
    return true;
}

// Empty when a name is unknown.
std::vector<Voice> chosenVoices(const std::vector<std::string>& names) {
    const auto all = recordings::voices();
    if (names.empty()) {
        return {all.begin(), all.end()};
    }
    std::vector<Voice> chosen;
    for (const std::string& name : names) {
        const auto found = std::ranges::find(all, name, &Voice::name);
        if (found == all.end()) {
            std::cerr << "make_recordings: no recording is called \"" << name << "\"\n";
            return {};
        }
        chosen.push_back(*found);
    }
    return chosen;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty()) {
        std::cerr << "usage: make_recordings OUT_FOLDER [name...]\n";
        return kMisused;
    }
    const std::vector<Voice> chosen = chosenVoices({arguments.begin() + 1, arguments.end()});
    if (chosen.empty()) {
        return kMisused;
    }

    const std::filesystem::path folder = arguments.front();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        std::cerr << "make_recordings: " << folder << ": " << error.message() << '\n';
        return kFailed;
    }
    const bool written =
        std::ranges::all_of(chosen, [&](const Voice& voice) { return render(voice, folder); });
    return written ? 0 : kFailed;
}
