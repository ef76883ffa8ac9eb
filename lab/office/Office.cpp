// Stands in for an installed Microsoft Office, as far as the registry goes: removes what HKEY_CLASSES_ROOT holds of
// OneNote, the add-in interfaces and the ribbon, and writes what a file describes:
//
//     office.exe FILE
//
// Each section of the file is a key, each line a value: NAME=TEXT, with "@" for the default value. The text is stored
// as a string with its terminating NUL, unless it begins with another type:
//
//     (unterminated) TEXT   a string without its NUL
//     (expand) TEXT         REG_EXPAND_SZ
//     (multi) TEXT|TEXT     REG_MULTI_SZ
//     (dword) NUMBER        REG_DWORD
//     (binary) TEXT         REG_BINARY, the bytes of a string
//
// "CLSID" and "Interface" are other keys for 32-bit programs, below "Wow6432Node"; "TypeLib" is the same key for both.
//
// The exit code is 0, or the HRESULT of what failed: E_INVALIDARG for a file that can't be read so.

#include "core/ComError.h"
#include "core/Unique.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr const wchar_t* Registrations[] = {
    L"OneNote.Application",
    L"OneNote.Application.14",
    L"OneNote.Application.15",
    L"CLSID\\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}",
    L"CLSID\\{DC67E480-C3CB-49F8-8232-60B0C2056C8E}",
    L"Interface\\{452AC71A-B655-4967-A208-A4CC39DD7949}",
    L"Interface\\{B65AD801-ABAF-11D0-BB8B-00A0C90F2744}",
    L"Interface\\{000C0396-0000-0000-C000-000000000046}",
    L"Interface\\{000C0395-0000-0000-C000-000000000046}",
    L"Interface\\{000C03A7-0000-0000-C000-000000000046}",
    L"TypeLib\\{0EA692EE-BB50-4E3C-AEF0-356D91732725}",
    L"TypeLib\\{AC0714F2-3D04-11D1-AE7D-00A0C90F26F4}",
    L"TypeLib\\{2DF8D04C-5BFA-101B-BDE5-00AA0044DE52}",
};

void RemoveRegistrations() {
    for (const std::wstring view : {L"", L"Wow6432Node\\"}) {
        for (const wchar_t* key : Registrations) {
            const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, (view + key).c_str());
            if (status != ERROR_FILE_NOT_FOUND)
                ThrowIfWin32Failed(status);
        }
    }
}

struct Value {
    DWORD type = REG_SZ;
    std::wstring text;
};

Value ParseValue(std::wstring_view text) {
    struct Notation {
        std::wstring_view prefix;
        DWORD type;
        std::wstring_view end;
    };
    using namespace std::string_view_literals;
    constexpr std::array Notations{
        Notation{L"(unterminated) ", REG_SZ, L""},      Notation{L"(expand) ", REG_EXPAND_SZ, L"\0"sv},
        Notation{L"(multi) ", REG_MULTI_SZ, L"\0\0"sv}, Notation{L"(dword) ", REG_DWORD, L""},
        Notation{L"(binary) ", REG_BINARY, L""},        Notation{L"", REG_SZ, L"\0"sv},
    };
    const Notation& notation = *std::ranges::find_if(
        Notations, [text](const Notation& candidate) { return text.starts_with(candidate.prefix); });
    text.remove_prefix(notation.prefix.size());
    Value value{notation.type, std::wstring(text).append(notation.end)};
    if (value.type == REG_MULTI_SZ)
        std::ranges::replace(value.text, L'|', L'\0');
    return value;
}

DWORD ParseNumber(const std::wstring& text) {
    wchar_t* end = nullptr;
    const DWORD number = std::wcstoul(text.c_str(), &end, 10);
    if (text.empty() || *end != L'\0')
        throw _com_error(E_INVALIDARG);
    return number;
}

void WriteValue(HKEY key, const std::wstring& name, const Value& value) {
    const DWORD number = value.type == REG_DWORD ? ParseNumber(value.text) : 0;
    const std::wstring guarded = value.text + L'.'; // Windows would add a NUL that it finds right behind a string
    const void* data = guarded.data();
    std::size_t size = value.text.size() * sizeof(wchar_t);
    if (value.type == REG_DWORD) {
        data = &number;
        size = sizeof number;
    }
    ThrowIfWin32Failed(RegSetValueExW(key, name == L"@" ? nullptr : name.c_str(), 0, value.type,
                                      static_cast<const BYTE*>(data), static_cast<DWORD>(size)));
}

/// A list of texts as the functions for settings files give them: each ends in a NUL, the last one in two.
template <typename Read>
std::vector<std::wstring> ReadList(Read read) {
    std::vector<wchar_t> buffer(32768);
    const auto size = static_cast<DWORD>(buffer.size());
    if (read(buffer.data(), size) == size - 2) // cut off
        throw _com_error(E_INVALIDARG);
    std::vector<std::wstring> list;
    for (const wchar_t* text = buffer.data(); *text != L'\0'; text += list.back().size() + 1)
        list.emplace_back(text);
    return list;
}

void WriteKey(const std::wstring& subkey, const std::wstring& file) {
    UniqueRegistryKey key;
    ThrowIfWin32Failed(RegCreateKeyExW(HKEY_CLASSES_ROOT, subkey.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr,
                                       key.Receive(), nullptr));
    const std::vector<std::wstring> lines = ReadList([&](wchar_t* buffer, DWORD size) {
        return GetPrivateProfileSectionW(subkey.c_str(), buffer, size, file.c_str());
    });
    for (const std::wstring& line : lines) {
        const std::size_t equals = line.find(L'=');
        if (equals == std::wstring::npos)
            throw _com_error(E_INVALIDARG);
        WriteValue(key.Get(), line.substr(0, equals), ParseValue(std::wstring_view(line).substr(equals + 1)));
    }
}

void WriteRegistrations(const std::wstring& file) {
    const std::vector<std::wstring> subkeys = ReadList(
        [&](wchar_t* buffer, DWORD size) { return GetPrivateProfileSectionNamesW(buffer, size, file.c_str()); });
    for (const std::wstring& subkey : subkeys)
        WriteKey(subkey, file);
}

} // namespace

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, wchar_t* /*commandLine*/, int /*show*/) {
    const std::filesystem::path file = __argc == 2 ? __wargv[1] : L"";
    if (!std::filesystem::is_regular_file(file))
        return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    try {
        RemoveRegistrations();
        WriteRegistrations(std::filesystem::absolute(file));
    } catch (const _com_error& error) {
        return error.Error();
    }
    return 0;
}
