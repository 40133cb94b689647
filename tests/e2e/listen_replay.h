#pragma once

#include "audio/sound_engine.h"
#include "listen_recording.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <vector>

namespace listen {

struct Trigger {
    std::int32_t sampleIndex = 0;
    float gain = 1.0f;
};

using Step = std::vector<Trigger>; // in the order in which the sequencer starts the voices

// What the panel is set to, and the rhythm from its first step on.
struct Scenario {
    double master = 1.0; // rotary 0..1
    std::vector<Step> cycle;
};

// Reads lines of "master VALUE" and of "step SAMPLE:SLIDER SAMPLE:SLIDER ...", sliders 0..650; a
// step without triggers is silent, a "#" begins a comment. Nothing when a line is wrong or no step
// triggers.
std::optional<Scenario> readScenario(std::istream& text);

struct Hit {
    std::size_t step = 0;       // counted from the start of the rhythm, over all cycles
    std::size_t firstBlock = 0; // before which its first and its last voice were started
    std::size_t lastBlock = 0;
};

struct Replay {
    std::vector<Hit> hits;  // steps that trigger something
    bool ambiguous = false; // the sound allows other hits too
    // From this block to the end all is silent, though the scenario is not: the power was switched
    // off.
    std::optional<std::size_t> muted;
    // Where it ceases to be the sound of the scenario, if it does.
    struct Difference {
        std::size_t block = 0, frame = 0;
    };
    std::optional<Difference> difference;
};

// Finds the blocks before which the steps were triggered, so that the engine, with its recordings
// loaded and the effect off, renders exactly what was recorded. Voices start one by one while
// blocks are rendered, so the triggers of a step may lie before different blocks.
Replay replay(percussomatic::SoundEngine& engine, const std::vector<Block>& recording,
              const Scenario& scenario);

} // namespace listen
