#include "ui/images.h"

#include "ui/assets.h"
#include "ui/icon_directory.h"
#include "ui/panel_rects.h"

#include <algorithm>
#include <cstring>

namespace percussomatic {

using namespace Gdiplus;
using namespace Gdiplus::DllExports;

namespace {

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

// The decoded pixels, premultiplied; empty when the picture cannot be decoded.
PixelImage decode(std::span<const std::byte> bytes) {
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

    PixelImage image{static_cast<int>(width), static_cast<int>(height), {}};
    image.pixels.resize(static_cast<std::size_t>(width) * height);
    const GpRect whole(0, 0, image.width, image.height);
    BitmapData lines{};
    lines.Width = width;
    lines.Height = height;
    lines.Stride = image.width * 4;
    lines.PixelFormat = PixelFormat32bppARGB;
    lines.Scan0 = image.pixels.data();
    if (GdipBitmapLockBits(source.get(), &whole, ImageLockModeRead | ImageLockModeUserInputBuf,
                           PixelFormat32bppARGB, &lines) != Ok) {
        return {};
    }
    GdipBitmapUnlockBits(source.get(), &lines);
    premultiply(image);
    return image;
}

void addPicture(ImageCache& cache, std::string_view name, double scale) {
    if (name.empty() || cache.pictures.contains(name)) {
        return;
    }
    cache.pictures.emplace(name, loadImageAsset(name, scale));
}

const Picture* pictureOf(const ImageCache& cache, std::string_view name) {
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
void loadCardImages(ImageCache& cache) {
    constexpr std::string_view kCard = "pounch.PNG", kHole = "hole.PNG", kPlate = "c_scheda.PNG";
    constexpr double kCardPixels = 2540.0; // height of the card's picture
    const LayoutSize layout = layoutSize();
    const PanelRects rects = panelRects(static_cast<int>(layout.width * cache.largestScale),
                                        static_cast<int>(layout.height * cache.largestScale), 0.0);
    const double scale = std::max(0.0, rects.dialogCard.height() / kCardPixels);
    addPicture(cache, kCard, scale);
    addPicture(cache, kHole, scale);
    addPicture(cache, kPlate, cache.largestScale);
    cache.cardImage = pictureOf(cache, kCard);
    cache.holeImage = pictureOf(cache, kHole);
    cache.readerFrontImage = pictureOf(cache, kPlate);
}

} // namespace

ImageCache& imageCache() noexcept {
    static ImageCache cache;
    return cache;
}

std::unique_ptr<Picture> loadImageAsset(std::string_view name, double largestScale) {
    const AssetBytes asset = findAsset(name);
    if (asset.size < 1) {
        return nullptr;
    }
    auto picture = std::make_unique<Picture>();
    picture->image = decode(asset.span());
    if (picture->image.width == 0) {
        return nullptr;
    }
    const int count = halvings(picture->image.width, picture->image.height, largestScale);
    for (int i = 0; i < count; ++i) {
        picture->image = halved(picture->image);
    }
    picture->bitmap =
        created<Bitmap>(GdipCreateBitmapFromScan0, picture->image.width, picture->image.height,
                        picture->image.width * 4, PixelFormat32bppPARGB,
                        reinterpret_cast<BYTE*>(picture->image.pixels.data()));
    return picture->bitmap == nullptr ? nullptr : std::move(picture);
}

void loadPanelImages(double largestScale) {
    ImageCache& cache = imageCache();
    releasePanelImages();
    cache.largestScale = largestScale;
    const auto rows = controlRows();
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const ControlRow& row = rows[index];
        if (row.visible == 0) {
            continue;
        }
        const std::string_view alternate = alternateName(row);
        addPicture(cache, row.image, largestScale);
        addPicture(cache, alternate, largestScale);
        cache.pairs[index] = {pictureOf(cache, row.image), pictureOf(cache, alternate)};
    }
    loadCardImages(cache);
}

void ensurePanelImages(double scale) {
    if (scale > imageCache().largestScale) {
        loadPanelImages(scale);
    }
}

void releasePanelImages() noexcept {
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
