#include "tests/support/ComErrors.h"

#include <array>

IErrorInfo* MakeErrorInformation(const wchar_t* description) {
    ICreateErrorInfo* creator = nullptr;
    CreateErrorInfo(&creator);
    creator->SetDescription(const_cast<wchar_t*>(description)); // copied, not changed
    IErrorInfo* information = nullptr;
    creator->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&information));
    creator->Release();
    return information;
}

std::wstring SystemMessage(HRESULT result) {
    std::array<wchar_t, 512> text{};
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, static_cast<DWORD>(result),
                       0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    std::wstring message(text.data(), length);
    while (message.ends_with(L'\n') || message.ends_with(L'\r'))
        message.pop_back();
    return message;
}
