#include "core/RegistryEntry.h"

#include "core/ComError.h"
#include "core/Log.h"
#include "core/Unique.h"

#include <strsafe.h>

#include <array>

namespace {

bool IsString(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

/// False when the key does not exist; throws for any other failure.
bool OpenKey(const RegistryEntry& entry, REGSAM access, UniqueRegistryKey& key) {
    const LSTATUS status = RegOpenKeyExW(entry.root, entry.subkey.c_str(), 0, access, key.Receive());
    if (status == ERROR_FILE_NOT_FOUND)
        return false;
    ThrowIfWin32Failed(status);
    return true;
}

void SetData(const RegistryEntry& entry, HKEY key, const void* data, std::size_t size) {
    ThrowIfWin32Failed(
        RegSetValueExW(key, entry.valueName, 0, entry.type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)));
}

void SetValue(const RegistryEntry& entry, HKEY key) {
    if (entry.type == REG_SZ || entry.type == REG_EXPAND_SZ) {
        // The NUL is not counted, so the value is stored without it. Windows would add one that it finds right behind
        // the data: there stands something else.
        const std::wstring guarded = entry.stringData + L'.';
        SetData(entry, key, guarded.data(), entry.stringData.size() * sizeof(wchar_t));
    } else if (entry.type == REG_DWORD) {
        SetData(entry, key, &entry.dwordData, sizeof entry.dwordData);
    } else {
        SetData(entry, key, nullptr, 0);
    }
}

/// Fetches string data of `size` bytes, one character more than that holds: the data may lack its NUL or have an odd
/// size, and may have shrunk or grown since `size` was asked for.
void QueryString(RegistryEntry& entry, HKEY key, DWORD size) {
    entry.stringData.assign(size / sizeof(wchar_t) + 1, L'\0');
    ThrowIfWin32Failed(RegQueryValueExW(key, entry.valueName, nullptr, nullptr,
                                        reinterpret_cast<BYTE*>(entry.stringData.data()), &size));
    entry.stringData.pop_back();
}

bool ReadValue(RegistryEntry& entry) {
    UniqueRegistryKey key;
    if (!OpenKey(entry, KEY_QUERY_VALUE, key))
        return false;

    DWORD size = sizeof entry.dwordData;
    const LSTATUS status = RegQueryValueExW(key.Get(), entry.valueName, nullptr, &entry.type,
                                            reinterpret_cast<BYTE*>(&entry.dwordData), &size);
    if (status == ERROR_FILE_NOT_FOUND)
        return false;
    if (status != ERROR_MORE_DATA)
        ThrowIfWin32Failed(status);

    if (entry.type == REG_DWORD)
        return true;
    if (!IsString(entry.type))
        return false;
    QueryString(entry, key.Get(), size);
    return true;
}

void DeleteValue(const RegistryEntry& entry) {
    UniqueRegistryKey key;
    if (!OpenKey(entry, KEY_SET_VALUE, key)) {
        Log(true) << L"Key not found";
        return;
    }
    const LSTATUS status = RegDeleteValueW(key.Get(), entry.valueName);
    if (status == ERROR_FILE_NOT_FOUND)
        Log(true) << L"Value not found";
    else
        ThrowIfWin32Failed(status);
}

void DeleteTree(const RegistryEntry& entry) {
    const LSTATUS status = RegDeleteTreeW(entry.root, entry.subkey.c_str());
    if (status == ERROR_FILE_NOT_FOUND)
        Log(true) << L"Key not found";
    else
        ThrowIfWin32Failed(status);
}

/// The error's description, or nothing when the error carries none. By way of the system's ANSI code page: letters
/// that it lacks are replaced, and support staff know the entry so.
std::wstring AnsiDescription(const _com_error& error) {
    const _bstr_t description = error.Description();
    if (description.length() == 0)
        return {};
    const auto length = static_cast<int>(description.length());
    const int ansiLength = WideCharToMultiByte(CP_ACP, 0, description, length, nullptr, 0, nullptr, nullptr);
    std::string ansi(static_cast<std::size_t>(ansiLength), '\0');
    WideCharToMultiByte(CP_ACP, 0, description, length, ansi.data(), ansiLength, nullptr, nullptr);
    const int textLength = MultiByteToWideChar(CP_ACP, 0, ansi.data(), ansiLength, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(textLength), L'\0');
    MultiByteToWideChar(CP_ACP, 0, ansi.data(), ansiLength, text.data(), textLength);
    return text;
}

} // namespace

const wchar_t* RootKeyName(HKEY root) {
    if (root == HKEY_CURRENT_USER)
        return L"HKCU";
    if (root == HKEY_LOCAL_MACHINE)
        return L"HKLM";
    return L"HKCR";
}

std::wstring RegistryEntry::PathText() const {
    return RootKeyName(root) + (L'\\' + subkey + L'\\') + (valueName != nullptr ? valueName : L"@");
}

std::wstring RegistryEntry::ValueText() const {
    switch (type) {
    case REG_SZ:
        return stringData + L" (String)";
    case REG_EXPAND_SZ:
        return stringData + L" (String expand)";
    case REG_DWORD: {
        std::array<wchar_t, 32> text{};
        StringCchPrintfW(text.data(), text.size(), L"%lu (DWORD)", dwordData);
        return text.data();
    }
    default:
        return L"<no-value>";
    }
}

void RegistryEntry::Write() const {
    Log(true) << L"Creating registry key: " << PathText();
    UniqueRegistryKey key;
    ThrowIfWin32Failed(
        RegCreateKeyExW(root, subkey.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Receive(), nullptr));
    if (type == REG_NONE)
        return;
    Log(false) << L" = " << ValueText();
    SetValue(*this, key.Get());
}

bool RegistryEntry::Read() {
    try {
        return ReadValue(*this);
    } catch (const _com_error&) {
        return false;
    }
}

void RegistryEntry::Delete() const {
    try {
        Log(true) << L"Deleting registry key: " << PathText();
        if (valueName != nullptr)
            DeleteValue(*this);
        else
            DeleteTree(*this);
    } catch (const _com_error& error) {
        Log(true) << L"ERROR: " << AnsiDescription(error);
    }
}
