#include "ui/Logo.h"

#include "ui/ResourceStream.h"

#include <comdef.h>

namespace {

/// A bitmap that is null when there is no memory for it. GDI+'s own operator new answers null then, but is not declared
/// noexcept: a compiler may go on to construct a bitmap there.
class NullableBitmap final : public Gdiplus::Bitmap {
public:
    using Gdiplus::Bitmap::Bitmap;
    static void* operator new(std::size_t size) noexcept { return Bitmap::operator new(size); }
    static void operator delete(void* memory) { Bitmap::operator delete(memory); }
};

using StreamPtr = _com_ptr_t<_com_IIID<IStream, &IID_IStream>>;

/// A stream over the logo; null when it lacks the interface. Throws for any other failure.
StreamPtr OpenLogo() {
    IUnknown* const logo = new ResourceStream; // never released: GDI+ may read it as long as the process lives
    IStream* stream = nullptr;
    const HRESULT result = logo->QueryInterface(IID_IStream, reinterpret_cast<void**>(&stream));
    if (result == E_NOINTERFACE)
        return {};
    _com_util::CheckError(result);
    return {stream, false};
}

} // namespace

void LoadLogo() {
    LogoBitmap = std::make_unique<NullableBitmap>(OpenLogo());
}
