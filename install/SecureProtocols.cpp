#include "install/SecureProtocols.h"

#include "checks/RegistryReport.h"
#include "core/ComError.h"
#include "core/Log.h"
#include "core/RegistryEntry.h"
#include "core/Unique.h"

namespace {

// WINHTTP_FLAG_SECURE_PROTOCOL_TLS1, _TLS1_1 and _TLS1_2.
constexpr DWORD Tls10 = 0x80;
constexpr DWORD Tls11 = 0x200;
constexpr DWORD Tls12 = 0x800;
constexpr DWORD RequiredProtocols = Tls10 | Tls11 | Tls12;

void Store(const RegistryEntry& entry) {
    UniqueRegistryKey key;
    const LSTATUS status = RegOpenKeyExW(entry.root, entry.subkey.c_str(), 0, KEY_SET_VALUE, key.Receive());
    if (status == ERROR_FILE_NOT_FOUND) {
        entry.Write();
        return;
    }
    ThrowIfWin32Failed(status);
    ThrowIfWin32Failed(RegSetValueExW(key.Get(), entry.valueName, 0, REG_DWORD,
                                      reinterpret_cast<const BYTE*>(&entry.dwordData), sizeof entry.dwordData));
}

} // namespace

void UpdateSecureProtocols(const wchar_t* subkey, bool update) {
    RegistryEntry entry{.root = HKEY_CURRENT_USER, .subkey = subkey, .valueName = L"SecureProtocols"};
    WriteRegistryReport(L"Internet Security Settings", {entry});
    if (!update)
        return;
    if (entry.Read() && (entry.dwordData & RequiredProtocols) == RequiredProtocols)
        return;
    entry.type = REG_DWORD;
    entry.dwordData |= RequiredProtocols;
    Store(entry);
    Log(true) << L"Updated to " << static_cast<int>(entry.dwordData);
}
