// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_image.h"
#include "win32/graphics/owned.h"

#include <windows.h>

#include <vector>

namespace percussomatic {

// Off-screen back buffer of the client area: a DIB section that is reused from paint to paint, so
// that a repaint allocates nothing and reaches the window by a plain copy. It only grows, because
// touching fresh memory costs more than painting. GUI thread.
class ScreenPixels {
public:
    // Sets the size; the content is then undefined. False if the size is empty or there is no
    // memory.
    bool fit(Size client);
    void release() noexcept;

    PixelView view() const noexcept { return view_; }
    HDC dc() const noexcept { return dc_.get(); }

private:
    Owned<HBITMAP, DeleteObject> bitmap_;
    Owned<HDC, DeleteDC> dc_; // destroyed first, because the bitmap is selected into it
    PixelView view_{};
    int rows_ = 0; // height of the bitmap; its width is the view's stride
};

ScreenPixels& screenPixels() noexcept;

// The rectangles of the window's update region; empty if it is valid. Call before BeginPaint, which
// validates it.
std::vector<PixelRect> invalidRects(HWND window);

PixelRect pixelRect(const RECT& rect) noexcept;
PixelRect boundsOf(const std::vector<PixelRect>& rects) noexcept; // 0 x 0 if empty

} // namespace percussomatic
