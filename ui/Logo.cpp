#include "ui/Logo.h"

#include "app/ProcessState.h"
#include "ui/ResourceStream.h"

#include <comdef.h>

#include <memory>
#include <new>

namespace {

using Memory = std::unique_ptr<void, decltype(&Gdiplus::DllExports::GdipFree)>;
using StreamPtr = _com_ptr_t<_com_IIID<IStream, &IID_IStream>>;

} // namespace

void LoadLogo() {
    // Allocated by hand: a constructor would run even on a null that the class's own operator new gives.
    Memory memory(Gdiplus::DllExports::GdipAlloc(sizeof(Gdiplus::Bitmap)), Gdiplus::DllExports::GdipFree);
    if (memory == nullptr)
        return;
    // The creator's reference is never released, on purpose: the stream lives as long as the process. Asking for the
    // interface throws, or leaves the pointer null, which makes an empty bitmap.
    const StreamPtr stream(static_cast<IUnknown*>(new ResourceStream));
    LogoBitmap.reset(::new (memory.release()) Gdiplus::Bitmap(stream));
}
