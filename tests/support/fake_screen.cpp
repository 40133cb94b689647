// SPDX-License-Identifier: MIT
#include "support/fake_screen.h"

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"

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

struct FakeScreen {
    std::array<Look, kPlaces> painted;
    std::set<int> marked;
    std::vector<std::string> requests;
};

FakeScreen& fakeScreen() {
    static FakeScreen screen;
    return screen;
}

std::string nameOf(int index) {
    if (index == kEffectsBox) {
        return "effects box";
    }
    return index == kTempoBox ? "tempo box" : std::string(controlRow(index).name);
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
            .sliderOffset = controlState().offset(index),
            .value = rotary == nullptr ? 0.0 : rotary->value};
}

void paintMarked() {
    FakeScreen& screen = fakeScreen();
    for (const int index : screen.marked) {
        screen.painted[static_cast<std::size_t>(index)] = lookOf(index);
    }
    screen.marked.clear();
}

void markAll() {
    for (int index = 0; index < kPlaces; ++index) {
        fakeScreen().marked.insert(index);
    }
}

// Painting at once takes along what has been marked before.
void request(int index, Repaint when, const std::string& words) {
    fakeScreen().requests.push_back(words);
    fakeScreen().marked.insert(index);
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
    fakeScreen().requests.emplace_back("midi boxes");
}

void redrawPanel() {
    markAll();
    fakeScreen().requests.emplace_back("panel");
    paintMarked();
}

// What lies in the dialog and the reader is always drawn from the cards themselves.
void redrawCardDialog() {
    fakeScreen().requests.emplace_back("card dialog");
}

void redrawReader() {
    fakeScreen().requests.emplace_back("reader");
}

void flushPainting() {
    fakeScreen().requests.emplace_back("flush");
    paintMarked();
}

void recordRequest(std::string words) {
    fakeScreen().requests.push_back(std::move(words));
}

std::vector<std::string> takeRedraws() {
    return std::exchange(fakeScreen().requests, {});
}

std::vector<std::string> staleControls() {
    paintMarked();
    std::vector<std::string> stale;
    for (int index = 0; index < kPlaces; ++index) {
        if (fakeScreen().painted[static_cast<std::size_t>(index)] != lookOf(index)) {
            stale.push_back(nameOf(index));
        }
    }
    return stale;
}

void resetFakeScreen() {
    fakeScreen() = {};
    markAll();
    paintMarked();
}

} // namespace percussomatic
