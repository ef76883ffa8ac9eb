#include "ui/Logo.h"

#include "app/ProcessState.h"
#include "ui/ResourceStream.h"

#include <comdef.h>

#include <new>

namespace {

using StreamPtr = _com_ptr_t<_com_IIID<IStream, &IID_IStream>>;

} // namespace

void LoadLogo() {
    // As the class's operator new does, but for a null result, which C++ forbids that operator.
    void* const memory = Gdiplus::DllExports::GdipAlloc(sizeof(Gdiplus::Bitmap));
    if (memory == nullptr)
        return;
    // The first reference is not released: GDI+ may read for as long as there is a bitmap. Asking for the interface
    // throws, or leaves the stream null, which makes an empty bitmap.
    const StreamPtr stream(static_cast<IUnknown*>(new ResourceStream));
    LogoBitmap.reset(::new (memory) Gdiplus::Bitmap(stream));
}
