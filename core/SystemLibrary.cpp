#include "core/SystemLibrary.h"

#include <array>
#include <string_view>

namespace {

bool IsRedirected(const wchar_t* name) {
    ACTCTX_SECTION_KEYED_DATA data{};
    data.cbSize = sizeof data;
    return FindActCtxSectionStringW(0, nullptr, ACTIVATION_CONTEXT_SECTION_DLL_REDIRECTION, name, &data);
}

/// For a Windows 7 without the update that brought the flags of the search (KB2533623).
HMODULE LoadByPath(const wchar_t* name) {
    // Only a bare name is redirected, and then Windows does not search for it.
    if (IsRedirected(name))
        return LoadLibraryExW(name, nullptr, 0);
    std::array<wchar_t, MAX_PATH> path{};
    const UINT length = GetSystemDirectoryW(path.data(), static_cast<UINT>(path.size()));
    const std::wstring_view bare(name);
    if (length == 0 || length + 1 + bare.size() >= path.size())
        return nullptr;
    path[length] = L'\\';
    bare.copy(&path[length + 1], bare.size());
    return LoadLibraryExW(path.data(), nullptr,
                          LOAD_WITH_ALTERED_SEARCH_PATH); // what it needs is searched for beside it
}

} // namespace

HMODULE LoadSystemLibrary(const wchar_t* name) {
    const HMODULE library = LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    return library == nullptr && GetLastError() == ERROR_INVALID_PARAMETER ? LoadByPath(name) : library;
}
