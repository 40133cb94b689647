#pragma once

// GDI+ through its flat functions, which are in Gdiplus::DllExports. The headers must come in this
// order: gdiplus.h needs objidl.h when windows.h is lean.
#include <windows.h>

#include <objidl.h>

#include <gdiplus.h>

#include "win32/graphics/owned.h"

namespace percussomatic {

// Owners of what the flat functions create.
using Graphics = Owned<Gdiplus::GpGraphics*, Gdiplus::DllExports::GdipDeleteGraphics>;
using Bitmap = Owned<Gdiplus::GpBitmap*, Gdiplus::DllExports::GdipDisposeImage>;
using Brush = Owned<Gdiplus::GpBrush*, Gdiplus::DllExports::GdipDeleteBrush>;
using Pen = Owned<Gdiplus::GpPen*, Gdiplus::DllExports::GdipDeletePen>;
using Font = Owned<Gdiplus::GpFont*, Gdiplus::DllExports::GdipDeleteFont>;
using FontFamily = Owned<Gdiplus::GpFontFamily*, Gdiplus::DllExports::GdipDeleteFontFamily>;
using StringFormat = Owned<Gdiplus::GpStringFormat*, Gdiplus::DllExports::GdipDeleteStringFormat>;
using ImageAttributes =
    Owned<Gdiplus::GpImageAttributes*, Gdiplus::DllExports::GdipDisposeImageAttributes>;

// What `create(arguments..., &object)` makes, or null.
template <typename Owner, typename Create, typename... Arguments>
Owner created(Create create, Arguments... arguments) {
    typename Owner::pointer object = nullptr;
    const Gdiplus::Status status = create(arguments..., &object);
    Owner owner(object);
    return status == Gdiplus::Ok ? std::move(owner) : Owner{};
}

} // namespace percussomatic
