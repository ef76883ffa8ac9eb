// What mingw-w64's COM support library lacks.

#include <windows.h>

#include <comdef.h>

#if defined(__MINGW32__)

// mingw-w64 declares this one in comdef.h and defines it nowhere.
void WINAPI _com_issue_errorex(HRESULT result, IUnknown* object, REFIID iid) {
    IErrorInfo* information = nullptr;
    ISupportErrorInfo* support = nullptr;
    if (object != nullptr &&
        SUCCEEDED(object->QueryInterface(IID_ISupportErrorInfo, reinterpret_cast<void**>(&support)))) {
        // The thread's error object may be a leftover of another call unless this interface says it sets one.
        if (support->InterfaceSupportsErrorInfo(iid) == S_OK && GetErrorInfo(0, &information) != S_OK)
            information = nullptr;
        support->Release();
    }
    throw _com_error(result, information); // takes the reference over
}

#endif
