#include "lab/onenote/Registration.h"

#include "core/Unique.h"

#include <comdef.h>

#include <array>

namespace {

_COM_SMARTPTR_TYPEDEF(ITypeLib, __uuidof(ITypeLib));

struct AutomationClass {
    const wchar_t* clsid;
    const wchar_t* progId;
};

constexpr AutomationClass Classes[] = {
    {L"{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}", L"OneNote.Application.14"},
    {L"{DC67E480-C3CB-49F8-8232-60B0C2056C8E}", L"OneNote.Application.15"},
};

constexpr wchar_t Library[] = L"{0EA692EE-BB50-4E3C-AEF0-356D91732725}";

std::wstring KeyOf(const AutomationClass& automation) {
    return std::wstring(L"CLSID\\") + automation.clsid;
}

std::wstring ThisProgram() {
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

void CheckStatus(LSTATUS status) {
    _com_util::CheckError(HRESULT_FROM_WIN32(status));
}

/// Writes a key's default value.
void Write(const std::wstring& key, const std::wstring& value) {
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    CheckStatus(RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, REG_SZ, value.c_str(), bytes));
}

void Delete(const std::wstring& key) {
    const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
    if (status != ERROR_FILE_NOT_FOUND)
        CheckStatus(status);
}

void RegisterClass(const AutomationClass& automation, const std::wstring& commandLine) {
    const std::wstring key = KeyOf(automation);
    const std::wstring progId = automation.progId;
    Write(key, L"Application Class");
    Write(key + L"\\LocalServer32", commandLine);
    Write(key + L"\\ProgID", progId);
    Write(key + L"\\TypeLib", Library);
    Write(progId, L"Application Class");
    Write(progId + L"\\CLSID", automation.clsid);
}

/// The library is the resource 3 of the program, and the registry says so.
void RegisterLibrary() {
    std::wstring file = ThisProgram() + L"\\3";
    ITypeLibPtr library;
    _com_util::CheckError(LoadTypeLibEx(file.c_str(), REGKIND_NONE, &library));
    _com_util::CheckError(RegisterTypeLib(library, file.data(), nullptr));
}

void UnregisterLibrary() {
    RegisterLibrary(); // only a whole registration can be undone, and a part of it may be missing
    GUID library{};
    _com_util::CheckError(CLSIDFromString(Library, &library));
    _com_util::CheckError(UnRegisterTypeLib(library, 1, 1, LOCALE_NEUTRAL, SYS_WIN32));
}

} // namespace

void RegisterOneNote(const std::wstring& options) {
    for (const AutomationClass& automation : Classes)
        RegisterClass(automation, L'"' + ThisProgram() + L"\" " + options);
    RegisterLibrary();
}

void UnregisterOneNote() {
    for (const AutomationClass& automation : Classes) {
        Delete(KeyOf(automation));
        Delete(automation.progId);
    }
    UnregisterLibrary();
}

bool IsRegistered() {
    UniqueRegistryKey key;
    return RegOpenKeyExW(HKEY_CLASSES_ROOT, KeyOf(Classes[0]).c_str(), 0, KEY_READ, key.Receive()) == ERROR_SUCCESS;
}
