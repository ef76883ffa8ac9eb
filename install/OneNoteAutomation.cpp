#include "install/OneNoteAutomation.h"

namespace {

using UnknownPtr = _com_ptr_t<_com_IIID<IUnknown, &IID_IUnknown>>;

HRESULT QueryApplication(const UnknownPtr& object, OneNoteApplicationPtr& application) {
    IApplication* found = nullptr;
    const HRESULT result = object->QueryInterface(IID_IApplication, reinterpret_cast<void**>(&found));
    if (SUCCEEDED(result))
        application.Attach(found);
    return result;
}

} // namespace

HRESULT CreateOneNoteApplication(OneNoteApplicationPtr& application) {
    application = nullptr;
    UnknownPtr object;
    const HRESULT created = CoCreateInstance(CLSID_OneNoteApplication, nullptr, CLSCTX_ALL, IID_IUnknown,
                                             reinterpret_cast<void**>(&object));
    if (FAILED(created) || !object) // a server may answer success and give nothing
        return created;
    const HRESULT running = OleRun(object);
    return SUCCEEDED(running) ? QueryApplication(object, application) : running;
}

OneNoteApplicationPtr ConnectToOneNote() {
    OneNoteApplicationPtr application;
    _com_util::CheckError(CreateOneNoteApplication(application));
    return application;
}

OneNoteWindowsPtr WindowsOf(const OneNoteApplicationPtr& application) {
    OneNoteWindowsPtr windows;
    ThrowIfCallFailed(application->get_Windows(&windows), application);
    return windows;
}

std::uint32_t CountOf(const OneNoteWindowsPtr& windows) {
    std::uint32_t count = 0;
    ThrowIfCallFailed(windows->get_Count(&count), windows);
    return count;
}

HWND HandleOf(const OneNoteWindowPtr& window) {
    std::uint64_t handle = 0;
    ThrowIfCallFailed(window->get_WindowHandle(&handle), window);
    return reinterpret_cast<HWND>(handle);
}
