#include "lab/onenote/Registration.h"

#include <comdef.h>

#include <array>

namespace {

_COM_SMARTPTR_TYPEDEF(ITypeLib, __uuidof(ITypeLib));

struct AutomationClass {
    const wchar_t* key;
    const wchar_t* progId;
};

constexpr AutomationClass Classes[] = {
    {L"CLSID\\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}", L"OneNote.Application.14"},
    {L"CLSID\\{DC67E480-C3CB-49F8-8232-60B0C2056C8E}", L"OneNote.Application.15"},
};

constexpr wchar_t Library[] = L"{0EA692EE-BB50-4E3C-AEF0-356D91732725}";

std::wstring ThisProgram() {
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

/// Writes a key's default value.
HRESULT Write(const std::wstring& key, const std::wstring& value) {
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return HRESULT_FROM_WIN32(RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, REG_SZ, value.c_str(), bytes));
}

HRESULT Delete(const std::wstring& key) {
    const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
    return status == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(status);
}

HRESULT RegisterClass(const AutomationClass& automation, const std::wstring& commandLine) {
    const std::wstring key = automation.key;
    const std::wstring clsid = key.substr(key.find(L'{'));
    for (const HRESULT result :
         {Write(key, L"Application Class"), Write(key + L"\\LocalServer32", commandLine),
          Write(key + L"\\ProgID", automation.progId), Write(key + L"\\TypeLib", Library),
          Write(automation.progId, L"Application Class"), Write(automation.progId + std::wstring(L"\\CLSID"), clsid)}) {
        if (FAILED(result))
            return result;
    }
    return S_OK;
}

/// The library is the resource 3 of the program, and the registry says so.
HRESULT RegisterLibrary() {
    std::wstring file = ThisProgram() + L"\\3";
    ITypeLibPtr library;
    const HRESULT result = LoadTypeLibEx(file.c_str(), REGKIND_NONE, &library);
    return FAILED(result) ? result : RegisterTypeLib(library, file.data(), nullptr);
}

} // namespace

HRESULT RegisterOneNote(const std::wstring& options) {
    for (const AutomationClass& automation : Classes) {
        const HRESULT result = RegisterClass(automation, L'"' + ThisProgram() + L"\" " + options);
        if (FAILED(result))
            return result;
    }
    return RegisterLibrary();
}

HRESULT UnregisterOneNote() {
    HRESULT result = RegisterLibrary(); // only a whole registration can be undone, and a part of it may be missing
    if (FAILED(result))
        return result;
    for (const AutomationClass& automation : Classes) {
        for (const wchar_t* key : {automation.key, automation.progId}) {
            result = Delete(key);
            if (FAILED(result))
                return result;
        }
    }
    GUID library{};
    CLSIDFromString(Library, &library);
    return UnRegisterTypeLib(library, 1, 1, LOCALE_NEUTRAL, SYS_WIN32);
}

bool IsRegistered() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, Classes[0].key, 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}
