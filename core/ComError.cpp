#include "core/ComError.h"

#include <array>
#include <cwchar>

namespace {

std::wstring Message(const _com_error& error) {
    const auto custom = CustomErrorTexts.find(error.Error());
    if (custom != CustomErrorTexts.end() && !custom->second.empty())
        return custom->second;

    const _bstr_t description = error.Description();
    if (description.length() != 0)
        return {static_cast<const wchar_t*>(description), description.length()};

    const wchar_t* const systemMessage = error.ErrorMessage();
    return systemMessage != nullptr ? systemMessage : L"";
}

} // namespace

void ThrowWin32Error(DWORD code) {
    throw _com_error(HRESULT_FROM_WIN32(code));
}

void ThrowIfFailed(LSTATUS status) {
    if (status != ERROR_SUCCESS)
        ThrowWin32Error(static_cast<DWORD>(status));
}

std::wstring ComErrorText(const _com_error& error) {
    std::array<wchar_t, 16> code{};
    std::swprintf(code.data(), code.size(), L" (0x%lx)", static_cast<unsigned long>(error.Error()));
    return Message(error) + code.data();
}
