#include "core/ComError.h"

#include <strsafe.h>

#include <array>

namespace {

// Windows' own message without its line break, inserts such as "%1" as they stand. `_com_error::ErrorMessage` alone
// does not do: mingw-w64's asks for the inserts' arguments too, and so gets no message that has one
// (ERROR_BAD_EXE_FORMAT).
std::wstring SystemMessage(HRESULT result) {
    std::array<wchar_t, 4096> text{};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        static_cast<DWORD>(result), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                                        text.data(), static_cast<DWORD>(text.size()), nullptr);
    std::wstring message(text.data(), length);
    if (message.ends_with(L"\r\n"))
        message.resize(message.size() - 2);
    return message;
}

std::wstring Message(const _com_error& error) {
    const auto custom = CustomErrorTexts.find(error.Error());
    if (custom != CustomErrorTexts.end() && !custom->second.empty())
        return custom->second;

    const _bstr_t description = error.Description();
    if (description.length() != 0)
        return {static_cast<const wchar_t*>(description), description.length()};

    std::wstring systemMessage = SystemMessage(error.Error());
    if (!systemMessage.empty())
        return systemMessage;

    const wchar_t* const unknown = error.ErrorMessage();
    return unknown != nullptr ? unknown : L"";
}

} // namespace

void ThrowWin32Error(DWORD code) {
    throw _com_error(HRESULT_FROM_WIN32(code));
}

void ThrowIfWin32Failed(LSTATUS status) {
    if (status != ERROR_SUCCESS)
        ThrowWin32Error(static_cast<DWORD>(status));
}

std::wstring ComErrorText(const _com_error& error) {
    std::array<wchar_t, 16> code{};
    StringCchPrintfW(code.data(), code.size(), L" (0x%lx)", static_cast<unsigned long>(error.Error()));
    return Message(error) + code.data();
}
