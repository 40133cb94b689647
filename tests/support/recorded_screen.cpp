#include "support/recorded_screen.h"

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "sequencer/front_panel.h"
#include "sequencer/panel_state.h"
#include "sequencer/sequencer.h"
#include "ui/control_layout.h"
#include "ui/redraw.h"

#include <array>
#include <cstddef>
#include <set>
#include <utility>

namespace percussomatic {

namespace {

// All that can change in a picture.
struct Look {
    bool lit = false;
    std::uint32_t sliderOffset = 0;
    double value = 0.0; // a rotary's, or the tempo in the box

    bool operator==(const Look&) const = default;
};

constexpr int kTempoBox = kControlCount, kEffectsBox = kControlCount + 1;
constexpr int kPlaces = kControlCount + 2;

struct RecordedScreen {
    std::array<Look, kPlaces> painted;
    std::set<int> marked;
    std::vector<std::string> requests;
};

RecordedScreen& recordedScreen() {
    static RecordedScreen screen;
    return screen;
}

std::string nameOf(int index) {
    if (index == kEffectsBox) {
        return "effects box";
    }
    return index == kTempoBox ? "tempo box"
                              : std::string(controlRows()[static_cast<std::size_t>(index)].name);
}

Look lookOf(int index) {
    if (index == kTempoBox) {
        const Sequencer& now = sequencer();
        const bool midiTempo = now.externalSync && now.midiClockSeen && now.midiBpm > 0.0;
        return {.lit = now.externalSync, .value = midiTempo ? now.midiBpm : now.bpm};
    }
    if (index == kEffectsBox) {
        return {.lit = soundEngine().isEffectEnabled()};
    }
    const RotaryState* rotary = rotaryState(index);
    return {.lit = controlLit(index),
            .sliderOffset = controlState().sliderOffset[static_cast<std::size_t>(index)],
            .value = rotary == nullptr ? 0.0 : rotary->value};
}

void paintMarked() {
    RecordedScreen& screen = recordedScreen();
    for (const int index : screen.marked) {
        screen.painted[static_cast<std::size_t>(index)] = lookOf(index);
    }
    screen.marked.clear();
}

void markAll() {
    for (int index = 0; index < kPlaces; ++index) {
        recordedScreen().marked.insert(index);
    }
}

// Painting at once takes along what has been marked before.
void request(int index, Repaint when, const std::string& words) {
    recordedScreen().requests.push_back(words);
    recordedScreen().marked.insert(index);
    if (when == Repaint::now) {
        paintMarked();
    }
}

} // namespace

void redrawControl(int index, Repaint when) {
    if (index != kNoControl) {
        request(index, when, nameOf(index) + (when == Repaint::now ? " now" : " later"));
    }
}

void redrawSlider(int index, std::uint32_t oldOffset) {
    request(index, Repaint::now, nameOf(index) + " from " + std::to_string(oldOffset));
}

void redrawTempoBox() {
    request(kTempoBox, Repaint::later, nameOf(kTempoBox));
}

void redrawEffectsBox() {
    request(kEffectsBox, Repaint::later, nameOf(kEffectsBox));
}

void redrawMidiBoxes() {
    recordedScreen().requests.emplace_back("midi boxes");
}

void refreshFromEngine() {
    recordedScreen().requests.emplace_back("effects window");
}

void redrawPanel() {
    markAll();
    recordedScreen().requests.emplace_back("panel");
    paintMarked();
}

// What lies in the dialog and the reader is always drawn from the cards themselves.
void redrawCardDialog() {
    recordedScreen().requests.emplace_back("card dialog");
}

void redrawReader() {
    recordedScreen().requests.emplace_back("reader");
}

void flushPainting() {
    recordedScreen().requests.emplace_back("flush");
    paintMarked();
}

std::vector<std::string> takeRedraws() {
    return std::exchange(recordedScreen().requests, {});
}

std::vector<std::string> staleControls() {
    paintMarked();
    std::vector<std::string> stale;
    for (int index = 0; index < kPlaces; ++index) {
        if (recordedScreen().painted[static_cast<std::size_t>(index)] != lookOf(index)) {
            stale.push_back(nameOf(index));
        }
    }
    return stale;
}

void resetRecordedScreen() {
    recordedScreen() = {};
    markAll();
    paintMarked();
}

} // namespace percussomatic
