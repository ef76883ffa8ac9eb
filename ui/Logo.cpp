#include "ui/Logo.h"

#include "ui/ResourceStream.h"

#include <comdef.h>

namespace {

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
    LogoBitmap = std::make_unique<Gdiplus::Bitmap>(OpenLogo());
}
