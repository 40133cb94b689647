// SPDX-License-Identifier: MIT
#include "graphics/scaled_pictures.h"

#include <cstddef>
#include <map>
#include <tuple>
#include <utility>

namespace percussomatic {

namespace {

using CacheKey = std::tuple<const PixelImage*, int, int>; // picture, width, height

struct Cache {
    std::map<CacheKey, PixelImage> images;
    std::size_t pixels = 0; // of all images
};

// The controls of a panel on a screen of 3840 x 2160 need less than a quarter of this.
constexpr std::size_t kMaxPixels = 4U << 20;

Cache& cache() noexcept {
    static Cache instance;
    return instance;
}

} // namespace

const PixelImage& cachedScaled(const PixelImage& picture, int width, int height) {
    Cache& pictures = cache();
    const CacheKey key{&picture, width, height};
    const auto found = pictures.images.find(key);
    if (found != pictures.images.end()) {
        return found->second;
    }
    if (pictures.pixels > kMaxPixels) {
        clearScaledPictures();
    }
    PixelImage result = width > 0 && height > 0 ? scaled(picture, width, height) : PixelImage();
    const PixelImage& image = pictures.images.emplace(key, std::move(result)).first->second;
    pictures.pixels += image.pixels.size();
    return image;
}

void clearScaledPictures() noexcept {
    cache() = {};
}

} // namespace percussomatic
