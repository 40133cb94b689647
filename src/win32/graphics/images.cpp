// SPDX-License-Identifier: MIT
#include "win32/graphics/images.h"

#include "assets/assets.h"
#include "graphics/icon_directory.h"
#include "graphics/scaled_pictures.h"
#include "panel/control_geometry.h"
#include "panel/panel_rects.h"
#include "win32/graphics/gdiplus_flat.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <thread>

namespace percussomatic {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

namespace {

constexpr std::string_view kCard = "pounch.PNG", kHole = "hole.PNG", kPlate = "c_scheda.PNG";

struct ReleaseStream {
    void operator()(IStream* stream) const noexcept { stream->Release(); }
};
using Stream = std::unique_ptr<IStream, ReleaseStream>;

// A stream over a copy of the bytes; the stream owns the copy.
Stream streamOf(std::span<const std::byte> bytes) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    if (block == nullptr) {
        return nullptr;
    }
    void* copy = GlobalLock(block);
    if (copy == nullptr) {
        GlobalFree(block);
        return nullptr;
    }
    std::memcpy(copy, bytes.data(), bytes.size());
    GlobalUnlock(block);
    IStream* stream = nullptr;
    if (FAILED(CreateStreamOnHGlobal(block, TRUE, &stream))) {
        GlobalFree(block);
        return nullptr;
    }
    return Stream(stream);
}

// A locked bitmap, halved `halvingCount` times. Works in strips of the rows that make one output
// row, because a second copy of a large picture might not fit into memory.
PixelImage reduced(const BitmapData& source, int halvingCount) {
    const int stripRows = 1 << halvingCount;
    PixelImage result;
    for (int top = 0; top < static_cast<int>(source.Height); top += stripRows) {
        PixelImage strip = blankImage(static_cast<int>(source.Width),
                                      std::min(stripRows, static_cast<int>(source.Height) - top));
        for (int y = 0; y < strip.height; ++y) {
            const auto* row = static_cast<const std::byte*>(source.Scan0) +
                              static_cast<std::ptrdiff_t>(top + y) * source.Stride;
            std::memcpy(viewOf(strip).row(y), row, source.Width * sizeof(std::uint32_t));
        }
        premultiply(strip);
        for (int i = 0; i < halvingCount; ++i) {
            strip = halved(strip);
        }
        result.width = strip.width;
        result.height += strip.height;
        result.pixels.insert(result.pixels.end(), strip.pixels.begin(), strip.pixels.end());
    }
    return result;
}

// Width and height from the file's header; 0 x 0 if the file is too short for one.
Size pngSize(std::span<const std::byte> file) noexcept {
    constexpr std::size_t kWidthAt = 16, kHeightAt = 20, kHeader = 24;
    const auto number = [file](std::size_t at) {
        int value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            value = value << 8 | std::to_integer<int>(file[at + i]);
        }
        return value;
    };
    return file.size() < kHeader ? Size{} : Size{number(kWidthAt), number(kHeightAt)};
}

// Premultiplied pixels, halved `halvingCount` times; empty if the picture cannot be decoded.
PixelImage decode(std::span<const std::byte> bytes, int halvingCount) {
    const Stream stream = streamOf(bytes);
    if (stream == nullptr) {
        return {};
    }
    const auto source = makeOwned<Bitmap>(GdipCreateBitmapFromStream, stream.get());
    UINT width = 0, height = 0;
    if (source == nullptr || GdipGetImageWidth(source.get(), &width) != Ok ||
        GdipGetImageHeight(source.get(), &height) != Ok || width == 0 || height == 0) {
        return {};
    }
    const GpRect whole(0, 0, static_cast<INT>(width), static_cast<INT>(height));
    BitmapData locked{};
    if (GdipBitmapLockBits(source.get(), &whole, ImageLockModeRead, PixelFormat32bppARGB,
                           &locked) != Ok) {
        return {};
    }
    PixelImage image = reduced(locked, halvingCount);
    GdipBitmapUnlockBits(source.get(), &locked);
    return image;
}

// The scale to load each picture file for, by asset name.
using PictureScales = std::map<std::string, double, std::less<>>;

void addPicture(PictureScales& scales, std::string_view name, double scale) {
    if (!name.empty()) {
        scales.try_emplace(std::string(name), scale);
    }
}

// Decodes the largest pictures one after another, because each takes a few hundred megabytes
// meanwhile, and all others in parallel with them.
void decodeAll(const PictureScales& scales, ImageCache& cache) {
    constexpr std::int32_t kLargeFile = 500'000; // bytes
    for (const auto& [name, scale] : scales) {
        cache.pictures[name] = nullptr;
    }
    const auto decodeAllOf = [&](bool large) {
        for (const auto& [name, scale] : scales) {
            if ((findAsset(name).size > kLargeFile) == large) {
                cache.pictures.find(name)->second = loadImageAsset(name, scale);
            }
        }
    };
    std::jthread others([&] { decodeAllOf(false); });
    decodeAllOf(true);
}

const PixelImage* pictureOf(const ImageCache& cache, std::string_view name) {
    const auto found = cache.pictures.find(name);
    return found == cache.pictures.end() ? nullptr : found->second.get();
}

// The beat lamp is not a toggle, so the control table does not name its lit picture.
std::string_view alternateName(const ControlRow& row) noexcept {
    if (isToggle(row) && !row.imageOn.empty()) {
        return row.imageOn;
    }
    if (isBeatLamp(row)) {
        return "BIN_onPNG.PNG";
    }
    return {};
}

// The card dialog shows a card larger than its size in the layout: it fills most of the window.
void addCardImages(PictureScales& scales, double largestScale) {
    constexpr double kCardPixels = 2540.0; // height of the card's picture
    const Size layout = layoutSize();
    const PanelRects rects = panelRects(static_cast<int>(layout.width * largestScale),
                                        static_cast<int>(layout.height * largestScale), 0.0);
    const int height = std::max(rects.dialogCard.height(), rects.readerCard.height());
    const double scale = height / kCardPixels;
    addPicture(scales, kCard, scale);
    addPicture(scales, kHole, scale);
    addPicture(scales, kPlate, largestScale);
}

} // namespace

ImageCache& imageCache() noexcept {
    static ImageCache cache;
    return cache;
}

std::unique_ptr<PixelImage> loadImageAsset(std::string_view name, double largestScale) {
    const Size native = pngSize(findAsset(name).span());
    const int count = halvings(native.width, native.height, largestScale);
    const PictureFile smallest = findPicture(name, count); // may be halved already by the build
    if (smallest.file.size < 1) {
        return nullptr;
    }
    try {
        auto picture =
            std::make_unique<PixelImage>(decode(smallest.file.span(), count - smallest.halvings));
        return picture->width > 0 ? std::move(picture) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr; // the panel is drawn without it
    }
}

void loadPanelImages(double largestScale) {
    ImageCache& cache = imageCache();
    releasePanelImages();
    cache.largestScale = largestScale;
    PictureScales scales;
    for (const ControlRow& row : controlRows()) {
        if (row.visible != 0) {
            addPicture(scales, row.image, largestScale);
            addPicture(scales, alternateName(row), largestScale);
        }
    }
    addCardImages(scales, largestScale);
    decodeAll(scales, cache);

    const auto rows = controlRows();
    for (std::size_t index = 0; index < rows.size(); ++index) {
        if (rows[index].visible != 0) {
            cache.pairs[index] = {pictureOf(cache, rows[index].image),
                                  pictureOf(cache, alternateName(rows[index]))};
        }
    }
    cache.cardImage = pictureOf(cache, kCard);
    cache.holeImage = pictureOf(cache, kHole);
    cache.readerFrontImage = pictureOf(cache, kPlate);
}

void ensurePanelImages(double scale) {
    if (scale > imageCache().largestScale) {
        loadPanelImages(scale);
    }
}

void releasePanelImages() noexcept {
    clearScaledPictures(); // they refer to the pictures
    imageCache() = ImageCache{};
}

HICON createAppIcon(int width, int height) {
    const auto image = bestIconImage(findAsset("AppIcon.ico").span(), width, height);
    if (image.empty()) {
        return nullptr;
    }
    // The function only reads the bytes, although its parameter is not const.
    auto* bytes = const_cast<BYTE*>(reinterpret_cast<const BYTE*>(image.data()));
    constexpr DWORD kIconVersion = 0x00030000;
    return CreateIconFromResourceEx(bytes, static_cast<DWORD>(image.size()), TRUE, kIconVersion,
                                    width, height, LR_DEFAULTCOLOR);
}

} // namespace percussomatic
