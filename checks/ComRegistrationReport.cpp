#include "checks/ComRegistrationReport.h"

#include "checks/RegistryReport.h"

#include <array>
#include <span>

namespace {

constexpr std::array ProgIdValues{
    RegisteredValue{L"", nullptr},
    RegisteredValue{L"\\CLSID", nullptr},
    RegisteredValue{L"\\CurVer", nullptr},
};

constexpr std::array ClassValues{
    RegisteredValue{L"", nullptr},
    RegisteredValue{L"\\InprocServer32", nullptr},
    RegisteredValue{L"\\InprocServer32", L"ThreadingModel"},
    RegisteredValue{L"\\LocalServer32", nullptr},
    RegisteredValue{L"\\ProgID", nullptr},
    RegisteredValue{L"\\TypeLib", nullptr},
};

constexpr std::array InterfaceValues{
    RegisteredValue{L"", nullptr},
    RegisteredValue{L"\\ProxyStubClsid", nullptr},
    RegisteredValue{L"\\ProxyStubClsid32", nullptr},
    RegisteredValue{L"\\TypeLib", nullptr},
    RegisteredValue{L"\\TypeLib", L"Version"},
};

/// The type library's version that the interface under `key` names, up to its first NUL. False when it names none.
bool ReadLibraryVersion(const std::wstring& key, std::wstring& version) {
    RegistryEntry entry{.root = HKEY_CLASSES_ROOT, .subkey = key + L"\\TypeLib", .valueName = L"Version"};
    if (!entry.Read())
        return false;
    version = entry.stringData.substr(0, entry.stringData.find(L'\0'));
    return true;
}

} // namespace

void ReportProgId(const std::wstring& progId, const std::vector<std::wstring>& versions) {
    std::vector<RegistryEntry> entries;
    AddEntries(entries, progId, ProgIdValues);
    for (const std::wstring& version : versions) // without CurVer, which only the name without a version has
        AddEntries(entries, std::wstring(progId).append(L".").append(version), std::span(ProgIdValues).first(2));
    WriteRegistryReport(L"ProgId for " + progId, entries);
}

void ReportClsid(const std::wstring& name, const std::wstring& clsid) {
    WriteRegistryReport(L"CLSID for " + name, EntriesOfBothViews(L"CLSID\\" + clsid, ClassValues));
}

std::wstring ReportInterface(const std::wstring& name, const std::wstring& iid) {
    const std::wstring key = L"Interface\\" + iid;
    WriteRegistryReport(L"IID for " + name, EntriesOfBothViews(key, InterfaceValues));
    std::wstring version;
    if (!ReadLibraryVersion(key, version))
        ReadLibraryVersion(In32BitView + key, version);
    return version;
}
