// SPDX-License-Identifier: MIT
// Prints the program's tables as JSON for everything that is not written in C++: the build, the
// artwork and the end-to-end tests. Runs while the build is configured.
//
// usage: print_tables >panel.json

#include "panel/card_layout.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/control_state.h"
#include "panel/control_table.h"
#include "pattern/instruments.h"
#include "pattern/pattern.h"

#include <iostream>
#include <string>
#include <string_view>

namespace percussomatic {
namespace {

// None of the texts has a character that JSON would escape.
std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

std::string property(std::string_view name, std::string_view text) {
    return quoted(name) + ": " + quoted(text);
}

std::string property(std::string_view name, int number) {
    return quoted(name) + ": " + std::to_string(number);
}

template <typename Rows, typename Print>
void printList(std::string_view name, const Rows& rows, Print print) {
    std::cout << quoted(name) << ": [";
    for (int index = 0; const auto& row : rows) {
        std::cout << (index == 0 ? "\n" : ",\n") << "  {" << print(index, row) << "}";
        ++index;
    }
    std::cout << "\n],\n";
}

std::string control(int /*index*/, const ControlRow& row) {
    return property("name", row.name) + ", " + property("image", row.image) + ", " +
           property("imageOn", row.imageOn) + ", " + property("type", row.type) + ", " +
           property("x", row.x) + ", " + property("y", row.y) + ", " +
           property("width", row.width) + ", " + property("height", row.height);
}

std::string instrument(int index, const Instrument& instrument) {
    const int line = index / kInstrumentsPerLine;
    const auto place = static_cast<std::size_t>(index % kInstrumentsPerLine);
    return property("name", instrument.name) + ", " + property("recording", instrument.recording) +
           ", " + property("switch", control::line(line).switches[place]) + ", " +
           property("line", line);
}

std::string line(int /*index*/, const control::Line& line) {
    return property("slider", line.slider) + ", " + property("clear", line.clear) + ", " +
           property("switchA", line.switches[0]) + ", " + property("switchB", line.switches[1]);
}

void printAll() {
    std::cout << "{\n";
    std::cout << quoted("layoutSize") << ": [" << layoutSize().width << ", " << layoutSize().height
              << "],\n"
              << property("sliderTravel", kSliderTravel) << ",\n"
              << property("lineCount", kLineCount) << ",\n"
              << property("stepCount", kStepCount) << ",\n"
              << quoted("sequenceLengths") << ": {";
    for (std::size_t i = 0; i < kSequenceLengths.size(); ++i) {
        std::cout << (i == 0 ? "" : ", ")
                  << property(control::kLengthSwitches[i], static_cast<int>(kSequenceLengths[i]));
    }
    std::cout << "},\n";
    printList("controls", controlRows(), control);
    printList("instruments", kInstruments, instrument);
    printList("lines", control::kLines, line);
    using namespace card_layout;
    std::cout << quoted("card") << ": {" << property("width", kWidth) << ", "
              << property("height", kHeight) << ", " << property("firstHoleX", kFirstHoleX) << ", "
              << property("holePitchX", kHolePitchX) << ", " << property("firstHoleY", kFirstHoleY)
              << ", " << property("holePitchY", kHolePitchY) << ", "
              << property("titleTop", kTitleTop) << ", " << property("titleBottom", kTitleBottom)
              << "},\n"
              << quoted("controlNames") << ": {" << property("startStop", control::kStartStop)
              << ", " << property("edit", control::kEdit) << ", "
              << property("clearAll", control::kClearAll) << ", "
              << property("power", control::kPower) << ", "
              << property("beatLamp", control::kBeatLamp) << ", "
              << property("masterDial", control::kMasterRotary) << ", "
              << property("tempoDial", control::kTempoRotary) << ", "
              << property("readerPlate", control::kReaderPlate) << "}\n}\n";
}

} // namespace
} // namespace percussomatic

int main() {
    percussomatic::printAll();
    return std::cout.flush() ? 0 : 1;
}
