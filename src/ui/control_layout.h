#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace percussomatic {

// The front panel as a fixed composition of named pictures in layout space, where one unit is one
// pixel of the artwork. A control's index is its row; later rows lie on top. Everything here runs
// on the GUI thread.

inline constexpr int kControlCount = 139;
inline constexpr int kNoControl = -1;
inline constexpr int kSliderTravel = 650; // layout units from one end of a slider to the other
inline constexpr int kLineCount = 6;
inline constexpr int kStepCount = 16;

struct ControlRow {
    std::string_view layerName; // carried, not read
    std::string_view name;      // the key used everywhere, compared without regard to case
    std::string_view note;      // carried, not read
    std::string_view stableId;  // carried, not read
    std::string_view image;
    std::string_view imageOn; // empty: one picture only
    std::string_view type;    // "Image", "ImageToggleButton" or "Slider"
    std::int32_t x, y, width, height;
    std::uint8_t visible;
};

// What the player has set, beside the table and indexed like it.
struct ControlState {
    std::array<std::uint8_t, kControlCount> toggleBits{};
    std::array<std::uint32_t, kControlCount> sliderOffset{}; // layout units, 0..kSliderTravel
};

// Client pixels, right and bottom exclusive.
struct PixelRect {
    int left = 0, top = 0, right = 0, bottom = 0;

    int width() const noexcept { return right - left; }
    int height() const noexcept { return bottom - top; }
    bool operator==(const PixelRect&) const = default;
};

struct PixelPoint {
    int x = 0, y = 0;
};

struct LayoutSize {
    std::int32_t width = 0, height = 0;
};

std::span<const ControlRow, kControlCount> controlRows() noexcept;
ControlState& controlState() noexcept;

// All toggles off but the power switch, all sliders at 0.
void resetControlState() noexcept;

// ASCII letters of either case are equal.
bool sameName(std::string_view a, std::string_view b) noexcept;

// Index of the first visible row of that name, or kNoControl.
int findControl(std::string_view name) noexcept;

// Index of the first visible row whose normal picture that is, or kNoControl.
int controlShowing(std::string_view image) noexcept;

bool isToggle(const ControlRow& row) noexcept; // type compared exactly
bool isSlider(const ControlRow& row) noexcept;
bool isRotary(const ControlRow& row) noexcept; // rotary_001 or rotary_002
bool isBeatLamp(const ControlRow& row) noexcept;

// Drawn in its present state at every paint; all other visible rows are background.
bool isInteractive(const ControlRow& row) noexcept;

// 1..96 for a visible step button, 0 for any other row.
int stepButtonNumber(const ControlRow& row) noexcept;
inline int stepButtonLine(int number) noexcept {
    return (number - 1) / kStepCount;
}
inline int stepButtonStep(int number) noexcept {
    return (number - 1) % kStepCount;
}

// Index of the button of line 0..5 and step 0..15.
int stepButtonIndex(int line, int step) noexcept;

// Right and lower edge of all visible rows; 1000 or 600 where that is below 1.
LayoutSize layoutSize(std::span<const ControlRow> rows = controlRows()) noexcept;

// Client pixels per layout unit; 1.0 for an empty client area.
double viewScale(int clientWidth, int clientHeight) noexcept;

// Where a control shows in the client area, moved by its slider offset or by another one.
PixelRect controlClientRect(int index, double scale) noexcept;
PixelRect controlClientRect(int index, double scale, std::uint32_t sliderOffset) noexcept;

// A control's redraws reach this much further on every side: scaled pictures bleed over the edge.
inline constexpr int kRedrawMargin = 2;
PixelRect inflated(PixelRect rect, int margin) noexcept;
PixelRect united(const PixelRect& a, const PixelRect& b) noexcept;
PixelRect intersected(const PixelRect& a, const PixelRect& b) noexcept; // 0 x 0 when apart
bool contains(const PixelRect& rect, PixelPoint point) noexcept;

// Client point in whole layout units, truncated.
PixelPoint layoutPoint(PixelPoint client, double scale) noexcept;

// Layout form: the client point truncated to layout units lies in the control's rectangle, moved by
// its slider offset. Nothing is hit at a scale of 0 or less.
bool hitsControl(int index, PixelPoint client, double scale) noexcept;

// Topmost visible control that the layout form hits and `accept(index)` takes, or kNoControl.
template <typename Accept>
int topControlAt(PixelPoint client, double scale, Accept accept) {
    for (int index = kControlCount - 1; index >= 0; --index) {
        if (hitsControl(index, client, scale) && accept(index)) {
            return index;
        }
    }
    return kNoControl;
}

int rotaryAt(PixelPoint client, double scale) noexcept;
int sliderAt(PixelPoint client, double scale) noexcept;

} // namespace percussomatic
