#include "ui/control_layout.h"

#include <algorithm>
#include <charconv>

namespace percussomatic {

namespace {

constexpr std::string_view kStepPrefix = "bottone_";

char lowered(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

template <typename Accept>
int firstVisible(Accept accept) noexcept {
    const auto rows = controlRows();
    const auto found = std::find_if(rows.begin(), rows.end(), [&accept](const ControlRow& row) {
        return row.visible != 0 && accept(row);
    });
    return found == rows.end() ? kNoControl : static_cast<int>(found - rows.begin());
}

} // namespace

ControlState& controlState() noexcept {
    static ControlState state;
    return state;
}

void resetControlState() noexcept {
    controlState() = ControlState{};
    const int power = findControl("pw_001");
    if (power != kNoControl) {
        controlState().toggleBits[static_cast<std::size_t>(power)] = 1;
    }
}

bool sameName(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowered(x) == lowered(y); });
}

int findControl(std::string_view name) noexcept {
    return firstVisible([name](const ControlRow& row) { return sameName(row.name, name); });
}

int controlShowing(std::string_view image) noexcept {
    return firstVisible([image](const ControlRow& row) { return sameName(row.image, image); });
}

bool isToggle(const ControlRow& row) noexcept {
    return row.type == "ImageToggleButton";
}

bool isSlider(const ControlRow& row) noexcept {
    return sameName(row.type, "Slider") || sameName(row.image, "slider.PNG");
}

bool isRotary(const ControlRow& row) noexcept {
    return sameName(row.name, "rotary_001") || sameName(row.name, "rotary_002");
}

bool isBeatLamp(const ControlRow& row) noexcept {
    return sameName(row.name, "bin_001") || sameName(row.image, "BIN_off.PNG");
}

bool isInteractive(const ControlRow& row) noexcept {
    return row.visible != 0 && (isSlider(row) || isToggle(row) || isRotary(row) || isBeatLamp(row));
}

int stepButtonNumber(const ControlRow& row) noexcept {
    if (row.visible == 0 || !sameName(row.name.substr(0, kStepPrefix.size()), kStepPrefix)) {
        return 0;
    }
    const std::string_view digits = row.name.substr(kStepPrefix.size());
    unsigned number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool wholeNumber = error == std::errc{} && end == digits.data() + digits.size();
    return wholeNumber && number <= kLineCount * kStepCount ? static_cast<int>(number) : 0;
}

int stepButtonIndex(int line, int step) noexcept {
    // Looked up once: repaints of whole columns ask for it at every step.
    static const auto indices = [] {
        std::array<int, kLineCount * kStepCount> found{};
        found.fill(kNoControl);
        for (int index = kControlCount - 1; index >= 0; --index) {
            const int number = stepButtonNumber(controlRows()[static_cast<std::size_t>(index)]);
            if (number > 0) {
                found[static_cast<std::size_t>(number - 1)] = index;
            }
        }
        return found;
    }();
    return indices[static_cast<std::size_t>(line * kStepCount + step)];
}

LayoutSize layoutSize(std::span<const ControlRow> rows) noexcept {
    LayoutSize size;
    for (const ControlRow& row : rows) {
        if (row.visible == 0) {
            continue;
        }
        size.width = std::max(size.width, row.x + row.width);
        size.height = std::max(size.height, row.y + row.height);
    }
    if (size.width < 1) {
        size.width = 1000;
    }
    if (size.height < 1) {
        size.height = 600;
    }
    return size;
}

double viewScale(int clientWidth, int clientHeight) noexcept {
    static const LayoutSize size = layoutSize(); // the table never changes
    const double scale = std::min(static_cast<double>(clientWidth) / size.width,
                                  static_cast<double>(clientHeight) / size.height);
    return scale > 0.0 ? scale : 1.0;
}

PixelRect controlClientRect(int index, double scale) noexcept {
    return controlClientRect(index, scale,
                             controlState().sliderOffset[static_cast<std::size_t>(index)]);
}

PixelRect controlClientRect(int index, double scale, std::uint32_t sliderOffset) noexcept {
    const ControlRow& row = controlRows()[static_cast<std::size_t>(index)];
    const int x = row.x + static_cast<int>(sliderOffset);
    return {static_cast<int>(x * scale), static_cast<int>(row.y * scale),
            static_cast<int>((x + row.width) * scale + 1.0),
            static_cast<int>((row.y + row.height) * scale + 1.0)};
}

PixelRect inflated(PixelRect rect, int margin) noexcept {
    return {rect.left - margin, rect.top - margin, rect.right + margin, rect.bottom + margin};
}

PixelRect intersected(const PixelRect& a, const PixelRect& b) noexcept {
    const PixelRect both{std::max(a.left, b.left), std::max(a.top, b.top),
                         std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
    return both.width() > 0 && both.height() > 0 ? both : PixelRect{};
}

PixelRect united(const PixelRect& a, const PixelRect& b) noexcept {
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

bool contains(const PixelRect& rect, PixelPoint point) noexcept {
    return point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
           point.y < rect.bottom;
}

PixelPoint layoutPoint(PixelPoint client, double scale) noexcept {
    return {static_cast<int>(client.x / scale), static_cast<int>(client.y / scale)};
}

bool hitsControl(int index, PixelPoint client, double scale) noexcept {
    if (!(scale > 0.0)) {
        return false;
    }
    const auto at = static_cast<std::size_t>(index);
    const ControlRow& row = controlRows()[at];
    if (row.visible == 0) {
        return false;
    }
    const int left = row.x + static_cast<int>(controlState().sliderOffset[at]);
    return contains({left, row.y, left + row.width, row.y + row.height},
                    layoutPoint(client, scale));
}

int rotaryAt(PixelPoint client, double scale) noexcept {
    return topControlAt(client, scale, [](int index) {
        return isRotary(controlRows()[static_cast<std::size_t>(index)]);
    });
}

int sliderAt(PixelPoint client, double scale) noexcept {
    return topControlAt(client, scale, [](int index) {
        return isSlider(controlRows()[static_cast<std::size_t>(index)]);
    });
}

} // namespace percussomatic
