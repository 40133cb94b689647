// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_image.h"
#include "panel/control_table.h"

#include <windows.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace percussomatic {

// The panel's pictures, decoded from the embedded files. Each file is decoded once, whoever shows
// it, and kept only as large as this screen can ever show it: at native size the panel would take
// half a gigabyte. GUI thread.

// The two pictures of a control; null where there is none.
struct ImagePair {
    const PixelImage* normal = nullptr;
    const PixelImage* alternate = nullptr; // the lit one
};

struct ImageCache {
    std::map<std::string, std::unique_ptr<PixelImage>, std::less<>> pictures; // by asset name
    std::array<ImagePair, kControlCount> pairs{};
    // Of punch cards: the card, one hole, and the reader's plate that covers a card behind it.
    const PixelImage* cardImage = nullptr;
    const PixelImage* holeImage = nullptr;
    const PixelImage* readerFrontImage = nullptr;
    double largestScale = 0.0; // client pixels per layout unit that the pictures are good for
};

ImageCache& imageCache() noexcept;

// Decodes the picture and reduces it for `largestScale`. Null when there is no such file or it
// cannot be decoded.
std::unique_ptr<PixelImage> loadImageAsset(std::string_view name, double largestScale);

// Fills the cache for all visible controls and the cards; what was in it is released. May run on
// any one thread while no other looks into the cache.
void loadPanelImages(double largestScale);

// Decodes again what is too small for this scale.
void ensurePanelImages(double scale);

void releasePanelImages() noexcept;

// The program's icon in the size of the embedded file that comes closest; null if there is none.
HICON createAppIcon(int width, int height);

} // namespace percussomatic
