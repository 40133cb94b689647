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

// The panel's pictures, decoded from the embedded files. Each file is decoded once and kept only as
// large as this screen can show it: at native size the panel would take half a gigabyte. GUI
// thread.

// The pictures of a control; null if there is none.
struct ImagePair {
    const PixelImage* normal = nullptr;
    const PixelImage* alternate = nullptr; // lit
};

struct ImageCache {
    std::map<std::string, std::unique_ptr<PixelImage>, std::less<>> pictures; // by asset name
    std::array<ImagePair, kControlCount> pairs{}; // by row of the control table
    // Punch cards: the card, one hole, and the reader's plate, which covers a card behind it.
    const PixelImage* cardImage = nullptr;
    const PixelImage* holeImage = nullptr;
    const PixelImage* readerFrontImage = nullptr;
    double largestScale = 0.0; // client pixels per layout unit up to which the pictures are sharp

    const ImagePair& pair(int index) const noexcept {
        return pairs[static_cast<std::size_t>(index)];
    }
};

ImageCache& imageCache() noexcept;

// Decodes the picture and halves it as often as `largestScale` (client pixels per layout unit)
// allows. Null if there is no such file or it cannot be decoded. Any thread.
std::unique_ptr<PixelImage> loadImageAsset(std::string_view name, double largestScale);

// Replaces the content of the cache by the pictures of all visible controls and of the cards. May
// run on any thread while no other uses the cache.
void loadPanelImages(double largestScale);

// Reloads the cache if its pictures are too small for the scale.
void ensurePanelImages(double scale);

void releasePanelImages() noexcept;

// The program's icon, made from the embedded image of the closest size; null on failure. The caller
// destroys it.
HICON createAppIcon(int width, int height);

} // namespace percussomatic
