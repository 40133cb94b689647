#include "panel/control_geometry.h"
#include "panel/control_state.h"
#include "win32/view/panel_rendering.h"

#include "cards/card_panel.h"
#include "graphics/scaled_pictures.h"
#include "panel/panel_state.h"
#include "sequencer/sequencer.h"
#include "win32/graphics/drawing.h"
#include "win32/graphics/gdiplus_flat.h"
#include "win32/graphics/images.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace percussomatic {
namespace {

constexpr int kWidth = 1618, kHeight = 1040; // the panel on a screen of 1920 x 1080

// The panel as composed off-screen, pixel for pixel.
struct Composed {
    PixelRect region;
    std::vector<std::uint32_t> pixels;

    PixelView view() { return {pixels.data(), region.width(), region.height(), region.width()}; }

    int grey(int x, int y) const {
        const std::uint32_t pixel =
            pixels[static_cast<std::size_t>((y - region.top) * region.width() + x - region.left)];
        return static_cast<int>((pixel & 0xFF) + ((pixel >> 8) & 0xFF) + ((pixel >> 16) & 0xFF)) /
               3;
    }
};

int worstDifference(const Composed& part, const Composed& whole) {
    int worst = 0;
    for (int y = part.region.top; y < part.region.bottom; ++y) {
        for (int x = part.region.left; x < part.region.right; ++x) {
            worst = std::max(worst, std::abs(part.grey(x, y) - whole.grey(x, y)));
        }
    }
    return worst;
}

class PanelRendering : public testing::Test {
protected:
    static void SetUpTestSuite() {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&gdiplus_, &input, nullptr);
        resetControlState();
        loadPanelImages(viewScale({kWidth, kHeight}));
        window_ = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, kWidth, kHeight, nullptr,
                                  nullptr, nullptr, nullptr);
        rebuildBackgroundCache(window_);
    }
    static void TearDownTestSuite() {
        DestroyWindow(window_);
        releaseBackgroundCache();
        releasePanelImages();
        Gdiplus::GdiplusShutdown(gdiplus_);
    }
    void SetUp() override {
        resetControlState();
        resetPanelState();
        resetSequencer();
    }

    static Composed compose(PixelRect region = {0, 0, kWidth, kHeight}) {
        Composed composed{region, std::vector<std::uint32_t>(
                                      static_cast<std::size_t>(region.width() * region.height()))};
        composePanel(composed.view(), region, {kWidth, kHeight});
        return composed;
    }

    static inline ULONG_PTR gdiplus_ = 0;
    static inline HWND window_ = nullptr;
};

TEST_F(PanelRendering, RotaryPointsToItsValue) {
    const int tempo = findControl("rotary_002");
    const double scale = viewScale({kWidth, kHeight});
    const PixelRect rect = controlClientRect(tempo, scale);
    const double centreX = (rect.left + rect.right) * 0.5, centreY = (rect.top + rect.bottom) * 0.5;
    for (const double value : {0.0, 0.5, 1.0}) {
        panelState().tempo.value = value;
        const Composed panel = compose();
        // The pointer is the brightest mark on the knob's skirt; 0 stands at 210 degrees.
        double best = 0, bestGrey = -1;
        for (int degree = 0; degree < 360; ++degree) {
            const double angle = degree * std::numbers::pi / 180;
            double sum = 0;
            for (const double radius : {80.0, 90.0, 100.0}) {
                sum += panel.grey(static_cast<int>(centreX + radius * scale * std::sin(angle)),
                                  static_cast<int>(centreY - radius * scale * std::cos(angle)));
            }
            if (sum > bestGrey) {
                bestGrey = sum;
                best = degree;
            }
        }
        EXPECT_NEAR(std::remainder(best - (210 + 300 * value), 360), 0, 12) << value;
    }
}

TEST_F(PanelRendering, ARegionAloneLooksAsInTheWholePanel) {
    sequencer().editMode = true;
    sequencer().pattern.steps.fill(1);
    const Composed whole = compose();
    for (const PixelRect region :
         {PixelRect{0, 0, 700, 60}, PixelRect{501, 220, 640, 275}, PixelRect{380, 880, 600, 990}}) {
        // The filter may round single pixels of an edge otherwise.
        EXPECT_LE(worstDifference(compose(region), whole), 48) << region.left;
    }
}

TEST_F(PanelRendering, KeptPicturesLookAsIfScaledAnew) {
    sequencer().editMode = true;
    sequencer().pattern.set(0, 0, true);
    compose();
    const Composed kept = compose();
    for (int control = 0; control < kControlCount; ++control) {
        // Dials are turned by the system, which may round another way in another region.
        if (isInteractive(controlRow(control)) && rotaryState(control) == nullptr) {
            clearScaledPictures();
            const PixelRect rect = controlClientRect(control, viewScale({kWidth, kHeight}));
            ASSERT_EQ(worstDifference(compose(rect), kept), 0) << control;
        }
    }
}

// Nothing is drawn where a later picture hides it, in two halves; here one whole after the other.
TEST_F(PanelRendering, StaticPicturesLieOneOverTheOther) {
    const double scale = viewScale({kWidth, kHeight});
    PixelImage plain = blankImage(kWidth, kHeight);
    fillPixels({0, 0, kWidth, kHeight}, 0xFF0F0F0F, viewOf(plain));
    PixelImage controls = blankImage(kWidth, kHeight);
    fillPixels({0, 0, kWidth, 42}, 0xFFFFFFFF, viewOf(controls)); // the strip
    for (int index = 0; index < kControlCount; ++index) {
        const ControlRow& row = controlRow(index);
        const PixelImage* picture = imageCache().pairs[static_cast<std::size_t>(index)].normal;
        const auto inPixels = [scale](int units) { return static_cast<int>(units * scale + 0.5); };
        if (isInteractive(row)) {
            const PixelRect rect = controlClientRect(index, scale);
            fillPixels(inflated(rect, rect.width() / 4), 0xFFFFFFFF, viewOf(controls)); // turned
        } else if (picture != nullptr) {
            copyPixels(scaled(*picture, inPixels(row.width), inPixels(row.height)), inPixels(row.x),
                       inPixels(row.y), viewOf(plain));
        }
    }
    const Composed panel = compose();
    for (std::size_t i = 0; i < plain.pixels.size(); ++i) {
        ASSERT_TRUE(controls.pixels[i] != 0 || panel.pixels[i] == plain.pixels[i]) << i;
    }
}

// Texts are copied from where they were drawn before, and nothing is drawn under the dialog.
TEST_F(PanelRendering, KeptTextsShowWhatIsWrittenThereNow) {
    constexpr PixelRect kLeft{0, 0, 500, kHeight}, kRight{500, 0, kWidth, kHeight}; // through BPM
    const struct {
        double bpm;
        bool dialog;
        int slot;
    } states[] = {{120, false, 0}, {133, false, 0}, {133, true, 0}, {133, true, 9}, {120, true, 9}};
    std::vector<std::vector<std::uint32_t>> seen;
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < std::size(states); ++i) {
            sequencer().bpm = states[i].bpm;
            cardPanel().cardsDialogOpen = states[i].dialog;
            cardPanel().dialogSlot = states[i].slot;
            const Composed whole = compose();
            // What crosses the edge is drawn anew; the filter may round edges of dials otherwise.
            EXPECT_LE(worstDifference(compose(kLeft), whole), 48) << i;
            EXPECT_LE(worstDifference(compose(kRight), whole), 48) << i;
            EXPECT_EQ(std::ranges::count(seen, whole.pixels), round) << i;
            seen.push_back(whole.pixels);
        }
    }
    resetCardPanel();
}

TEST_F(PanelRendering, WritesInAnotherFontWhereOneIsMissing) {
    PixelImage paper = blankImage(200, 40);
    const Bitmap bitmap = bitmapOver(viewOf(paper));
    const Graphics graphics = graphicsOn(bitmap.get());
    drawText(graphics.get(), L"CARDS", {0, 0, 200, 40},
             {.family = L"No such font", .sizePixels = 20, .argb = 0xFFFFFFFF});
    EXPECT_GT(std::count(paper.pixels.begin(), paper.pixels.end(), 0xFFFFFFFF), 20);
}

TEST_F(PanelRendering, SurvivesAnEmptyWindowAndMissingPictures) {
    for (const int side : {2, 1, 0}) {
        HWND tiny = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, side, side, nullptr, nullptr,
                                    nullptr, nullptr);
        rebuildBackgroundCache(tiny);
        EXPECT_TRUE(backgroundFits({side, side}));
        DestroyWindow(tiny);
    }
    compose({0, 0, 50, 50});
    EXPECT_EQ(loadImageAsset("nothing.PNG", 1.0), nullptr);
    EXPECT_EQ(loadImageAsset("clave.wav", 1.0), nullptr);
    const auto kept = imageCache().pairs;
    imageCache().pairs = {};
    rebuildBackgroundCache(window_);
    EXPECT_EQ(compose().grey(800, 500), 0x0F);
    imageCache().pairs = kept;
    rebuildBackgroundCache(window_);
}

TEST_F(PanelRendering, PicturesAreKeptOnlyAsLargeAsTheScreenShowsThem) {
    EXPECT_EQ(loadImageAsset("SW_on.PNG", 0.2)->width, 36); // a quarter, rounded up: 142 * 0.2
    EXPECT_EQ(loadImageAsset("SW_on.PNG", 1.0)->width, 142);

    // Copies that were reduced by the build are no others than those reduced here.
    PixelImage half = halved(*loadImageAsset("c_scheda.PNG", 1.0));
    for (const double scale : {0.5, 0.25, 0.125}) {
        EXPECT_EQ(loadImageAsset("c_scheda.PNG", scale)->pixels, half.pixels) << scale;
        half = halved(half);
    }
}

} // namespace
} // namespace percussomatic
