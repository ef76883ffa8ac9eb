#pragma once

#include <windows.h>

#include <oaidl.h>

/// A COM error-information object with that description; the caller owns the reference.
inline IErrorInfo* MakeErrorInformation(const wchar_t* description) {
    ICreateErrorInfo* creator = nullptr;
    CreateErrorInfo(&creator);
    creator->SetDescription(const_cast<wchar_t*>(description)); // copied, not changed
    IErrorInfo* information = nullptr;
    creator->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&information));
    creator->Release();
    return information;
}
