// SPDX-License-Identifier: MIT
#pragma once

// The flat API of GDI+ (Gdiplus::DllExports) with owning handles. The order of the headers matters:
// gdiplus.h needs objidl.h, which a lean windows.h leaves out.
#include <windows.h>

#include <objidl.h>

#include <gdiplus.h>

#include "win32/graphics/owned.h"

namespace percussomatic {

using Graphics = Owned<Gdiplus::GpGraphics*, Gdiplus::DllExports::GdipDeleteGraphics>;
using Bitmap = Owned<Gdiplus::GpBitmap*, Gdiplus::DllExports::GdipDisposeImage>;
using Brush = Owned<Gdiplus::GpBrush*, Gdiplus::DllExports::GdipDeleteBrush>;
using Pen = Owned<Gdiplus::GpPen*, Gdiplus::DllExports::GdipDeletePen>;
using Font = Owned<Gdiplus::GpFont*, Gdiplus::DllExports::GdipDeleteFont>;
using FontFamily = Owned<Gdiplus::GpFontFamily*, Gdiplus::DllExports::GdipDeleteFontFamily>;
using StringFormat = Owned<Gdiplus::GpStringFormat*, Gdiplus::DllExports::GdipDeleteStringFormat>;
using ImageAttributes =
    Owned<Gdiplus::GpImageAttributes*, Gdiplus::DllExports::GdipDisposeImageAttributes>;

// Owns the object that `create(arguments..., &object)` returns; null on failure.
template <typename Owner, typename Create, typename... Arguments>
Owner makeOwned(Create create, Arguments... arguments) {
    typename Owner::pointer object = nullptr;
    const Gdiplus::Status status = create(arguments..., &object);
    Owner owner(object);
    return status == Gdiplus::Ok ? std::move(owner) : Owner{};
}

} // namespace percussomatic
