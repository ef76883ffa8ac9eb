#include "core/TempPath.h"

#include <windows.h>

#include <array>

namespace {

std::wstring TemporaryFolder() {
    std::array<wchar_t, 1024> buffer{};
    const DWORD length = GetTempPathW(static_cast<DWORD>(buffer.size()), buffer.data());
    // 0 is a failure; a length that doesn't fit is what the buffer would have needed.
    return length < buffer.size() ? std::wstring(buffer.data(), length) : std::wstring();
}

} // namespace

std::wstring TempPath(std::wstring_view suffix) {
    static std::wstring folder;
    if (folder.empty())
        folder = TemporaryFolder();
    return std::wstring(folder).append(suffix);
}
