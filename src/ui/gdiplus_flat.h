#pragma once

// GDI+ through its flat functions, which are in Gdiplus::DllExports. The headers must come in this
// order: gdiplus.h needs objidl.h when windows.h is lean.
#include <windows.h>

#include <objidl.h>

#include <gdiplus.h>

#include <memory>

namespace percussomatic {

// Owners of what the flat functions create.
template <auto release>
struct GdiplusRelease {
    template <typename T>
    void operator()(T* object) const noexcept {
        release(object);
    }
};
using Graphics =
    std::unique_ptr<Gdiplus::GpGraphics, GdiplusRelease<Gdiplus::DllExports::GdipDeleteGraphics>>;
using Bitmap =
    std::unique_ptr<Gdiplus::GpBitmap, GdiplusRelease<Gdiplus::DllExports::GdipDisposeImage>>;
using Brush =
    std::unique_ptr<Gdiplus::GpBrush, GdiplusRelease<Gdiplus::DllExports::GdipDeleteBrush>>;
using Pen = std::unique_ptr<Gdiplus::GpPen, GdiplusRelease<Gdiplus::DllExports::GdipDeletePen>>;
using Font = std::unique_ptr<Gdiplus::GpFont, GdiplusRelease<Gdiplus::DllExports::GdipDeleteFont>>;
using FontFamily = std::unique_ptr<Gdiplus::GpFontFamily,
                                   GdiplusRelease<Gdiplus::DllExports::GdipDeleteFontFamily>>;
using StringFormat = std::unique_ptr<Gdiplus::GpStringFormat,
                                     GdiplusRelease<Gdiplus::DllExports::GdipDeleteStringFormat>>;
using ImageAttributes =
    std::unique_ptr<Gdiplus::GpImageAttributes,
                    GdiplusRelease<Gdiplus::DllExports::GdipDisposeImageAttributes>>;

// What `create(arguments..., &object)` makes, or null.
template <typename Owner, typename Create, typename... Arguments>
Owner created(Create create, Arguments... arguments) {
    typename Owner::pointer object = nullptr;
    const Gdiplus::Status status = create(arguments..., &object);
    Owner owner(object);
    return status == Gdiplus::Ok ? std::move(owner) : Owner{};
}

} // namespace percussomatic
