// SPDX-License-Identifier: MIT
#include "win32/graphics/screen_pixels.h"

#include <cstddef>

namespace percussomatic {

bool ScreenPixels::fit(Size client) {
    if (client.width <= 0 || client.height <= 0) {
        return false;
    }
    if (bitmap_ != nullptr && client.width <= view_.stride && client.height <= rows_) {
        view_.width = client.width;
        view_.height = client.height;
        return true;
    }
    release();
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof format.bmiHeader;
    format.bmiHeader.biWidth = client.width;
    format.bmiHeader.biHeight = -client.height; // negative: top-down rows
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    void* pixels = nullptr;
    dc_ = Owned<HDC, DeleteDC>(CreateCompatibleDC(nullptr));
    bitmap_ = Owned<HBITMAP, DeleteObject>(
        CreateDIBSection(dc_.get(), &format, DIB_RGB_COLORS, &pixels, nullptr, 0));
    if (dc_ == nullptr || bitmap_ == nullptr) {
        release();
        return false;
    }
    SelectObject(dc_.get(), bitmap_.get());
    view_ = {static_cast<std::uint32_t*>(pixels), client.width, client.height, client.width};
    rows_ = client.height;
    return true;
}

void ScreenPixels::release() noexcept {
    dc_ = {};
    bitmap_ = {};
    view_ = {};
    rows_ = 0;
}

ScreenPixels& screenPixels() noexcept {
    static ScreenPixels pixels;
    return pixels;
}

PixelRect pixelRect(const RECT& rect) noexcept {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

PixelRect boundsOf(const std::vector<PixelRect>& rects) noexcept {
    PixelRect bounds = rects.empty() ? PixelRect{} : rects.front();
    for (const PixelRect& rect : rects) {
        bounds = united(bounds, rect);
    }
    return bounds;
}

std::vector<PixelRect> invalidRects(HWND window) {
    const Owned<HRGN, DeleteObject> region(CreateRectRgn(0, 0, 0, 0));
    std::vector<PixelRect> rects;
    if (region == nullptr || GetUpdateRgn(window, region.get(), FALSE) <= NULLREGION) {
        return rects;
    }
    const DWORD size = GetRegionData(region.get(), 0, nullptr);
    std::vector<std::byte> bytes(size);
    auto* list = reinterpret_cast<RGNDATA*>(bytes.data());
    if (size == 0 || GetRegionData(region.get(), size, list) == 0) {
        return rects;
    }
    const auto* first = reinterpret_cast<const RECT*>(list->Buffer);
    for (DWORD i = 0; i < list->rdh.nCount; ++i) {
        rects.push_back(pixelRect(first[i]));
    }
    return rects;
}

} // namespace percussomatic
