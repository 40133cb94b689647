#pragma once

#include "graphics/pixel_image.h"
#include "win32/graphics/owned.h"

#include <windows.h>

#include <vector>

namespace percussomatic {

// The client area as it is composed off-screen: one bitmap of the system's that is kept from paint
// to paint, so that a repaint allocates nothing and reaches the window by a plain copy. It only
// grows: fresh memory costs more than the painting. GUI thread.
class ScreenPixels {
public:
    bool fit(Size client); // content undefined when the size has changed; false without
    void release() noexcept;

    PixelView view() const noexcept { return view_; }
    HDC dc() const noexcept { return dc_.get(); }

private:
    Owned<HBITMAP, DeleteObject> bitmap_;
    Owned<HDC, DeleteDC> dc_; // goes first: it holds the bitmap
    PixelView view_{};
    int rows_ = 0; // of the bitmap; its columns are the view's stride
};

ScreenPixels& screenPixels() noexcept;

// What has to be painted again; empty when nothing has. To be asked before BeginPaint.
std::vector<PixelRect> invalidRects(HWND window);

PixelRect pixelRect(const RECT& rect) noexcept;
PixelRect boundsOf(const std::vector<PixelRect>& rects) noexcept; // 0 x 0 for none

} // namespace percussomatic
