#include "graphics/scaled_pictures.h"

#include <cstddef>
#include <map>
#include <tuple>
#include <utility>

namespace percussomatic {

namespace {

using PictureInSize = std::tuple<const PixelImage*, int, int>;

struct ScaledPictures {
    std::map<PictureInSize, PixelImage> kept;
    std::size_t pixels = 0;
};

// All controls of a panel on a screen of 3840 x 2160 need less than a quarter of it.
constexpr std::size_t kMostPixels = 4U << 20;

ScaledPictures& scaledPictures() noexcept {
    static ScaledPictures pictures;
    return pictures;
}

} // namespace

const PixelImage& cachedScaled(const PixelImage& picture, int width, int height) {
    ScaledPictures& pictures = scaledPictures();
    const PictureInSize wanted{&picture, width, height};
    const auto found = pictures.kept.find(wanted);
    if (found != pictures.kept.end()) {
        return found->second;
    }
    if (pictures.pixels > kMostPixels) {
        clearScaledPictures();
    }
    PixelImage shown = width > 0 && height > 0 ? scaled(picture, width, height) : PixelImage();
    const PixelImage& image = pictures.kept.emplace(wanted, std::move(shown)).first->second;
    pictures.pixels += image.pixels.size();
    return image;
}

void clearScaledPictures() noexcept {
    scaledPictures() = {};
}

} // namespace percussomatic
