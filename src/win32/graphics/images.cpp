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

// The rows of a locked bitmap, halved so many times. As many rows as make one are taken at a time:
// a second copy of a large picture would not fit beside the first.
PixelImage reduced(const BitmapData& source, int count) {
    const int stripRows = 1 << count;
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
        for (int i = 0; i < count; ++i) {
            strip = halved(strip);
        }
        result.width = strip.width;
        result.height += strip.height;
        result.pixels.insert(result.pixels.end(), strip.pixels.begin(), strip.pixels.end());
    }
    return result;
}

// Width and height as the file's header tells them; 0 x 0 for what is too short for one.
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

// The decoded pixels, premultiplied and halved so many times; empty when the picture cannot be
// decoded.
PixelImage decode(std::span<const std::byte> bytes, int count) {
    const Stream stream = streamOf(bytes);
    if (stream == nullptr) {
        return {};
    }
    const auto source = created<Bitmap>(GdipCreateBitmapFromStream, stream.get());
    UINT width = 0, height = 0;
    if (source == nullptr || GdipGetImageWidth(source.get(), &width) != Ok ||
        GdipGetImageHeight(source.get(), &height) != Ok || width == 0 || height == 0) {
        return {};
    }
    const GpRect whole(0, 0, static_cast<INT>(width), static_cast<INT>(height));
    BitmapData lines{};
    if (GdipBitmapLockBits(source.get(), &whole, ImageLockModeRead, PixelFormat32bppARGB, &lines) !=
        Ok) {
        return {};
    }
    PixelImage image = reduced(lines, count);
    GdipBitmapUnlockBits(source.get(), &lines);
    return image;
}

// What a scale asks for: every file once.
using WantedPictures = std::map<std::string, double, std::less<>>;

void want(WantedPictures& wanted, std::string_view name, double scale) {
    if (!name.empty()) {
        wanted.try_emplace(std::string(name), scale);
    }
}

// Decodes the largest pictures one after the other, since each takes a few hundred megabytes while
// it does, and all others beside them.
void decodeAll(const WantedPictures& wanted, ImageCache& cache) {
    constexpr std::int32_t kLargeFile = 500'000; // bytes
    for (const auto& [name, scale] : wanted) {
        cache.pictures[name] = nullptr;
    }
    const auto decodeThose = [&](bool large) {
        for (const auto& [name, scale] : wanted) {
            if ((findAsset(name).size > kLargeFile) == large) {
                cache.pictures.find(name)->second = loadImageAsset(name, scale);
            }
        }
    };
    std::jthread others([&] { decodeThose(false); });
    decodeThose(true);
}

const PixelImage* pictureOf(const ImageCache& cache, std::string_view name) {
    const auto found = cache.pictures.find(name);
    return found == cache.pictures.end() ? nullptr : found->second.get();
}

// The beat lamp is no toggle in the table; its lit picture is known only here.
std::string_view alternateName(const ControlRow& row) noexcept {
    if (isToggle(row) && !row.imageOn.empty()) {
        return row.imageOn;
    }
    if (row.name == "bin_001" || row.image == "BIN_off.PNG") {
        return "BIN_onPNG.PNG";
    }
    return {};
}

// A card in the dialog fills most of the window's height, far more than its share of the layout.
void wantCardImages(WantedPictures& wanted, double largestScale) {
    constexpr double kCardPixels = 2540.0; // height of the card's picture
    const Size layout = layoutSize();
    const PanelRects rects = panelRects(static_cast<int>(layout.width * largestScale),
                                        static_cast<int>(layout.height * largestScale), 0.0);
    const int height = std::max(rects.dialogCard.height(), rects.readerCard.height());
    const double scale = height / kCardPixels;
    want(wanted, kCard, scale);
    want(wanted, kHole, scale);
    want(wanted, kPlate, largestScale);
}

} // namespace

ImageCache& imageCache() noexcept {
    static ImageCache cache;
    return cache;
}

std::unique_ptr<PixelImage> loadImageAsset(std::string_view name, double largestScale) {
    const Size native = pngSize(findAsset(name).span());
    const int count = halvings(native.width, native.height, largestScale);
    const PictureFile smallest = findPicture(name, count);
    if (smallest.file.size < 1) {
        return nullptr;
    }
    try {
        auto picture =
            std::make_unique<PixelImage>(decode(smallest.file.span(), count - smallest.halvings));
        return picture->width > 0 ? std::move(picture) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr; // drawn without, as every picture that cannot be decoded
    }
}

void loadPanelImages(double largestScale) {
    ImageCache& cache = imageCache();
    releasePanelImages();
    cache.largestScale = largestScale;
    WantedPictures wanted;
    for (const ControlRow& row : controlRows()) {
        if (row.visible != 0) {
            want(wanted, row.image, largestScale);
            want(wanted, alternateName(row), largestScale);
        }
    }
    wantCardImages(wanted, largestScale);
    decodeAll(wanted, cache);

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
    clearScaledPictures(); // which are known by their pictures
    imageCache() = ImageCache{};
}

HICON createAppIcon(int width, int height) {
    const auto image = bestIconImage(findAsset("AppIcon.ico").span(), width, height);
    if (image.empty()) {
        return nullptr;
    }
    // The system only reads the bytes, though its parameter is not const.
    auto* bytes = const_cast<BYTE*>(reinterpret_cast<const BYTE*>(image.data()));
    constexpr DWORD kIconVersion = 0x00030000;
    return CreateIconFromResourceEx(bytes, static_cast<DWORD>(image.size()), TRUE, kIconVersion,
                                    width, height, LR_DEFAULTCOLOR);
}

} // namespace percussomatic
