// Unattended installations with the real executable on machines whose registry somebody has spoilt.

#include "tests/support/LabOffice.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"
#include "tests/support/Watchdog.h"

#include <winternl.h>

#include <algorithm>
#include <fstream>

namespace {

class HostileRegistry : public Machine {
    const LabOffice office_{L"no-office"};
};

template <typename Function>
Function* KernelFunction(const char* name) {
    const FARPROC function = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name);
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(function));
}

/// The kernel's path of a key of the current user.
std::wstring KernelPath(const std::wstring& subkey) {
    UNICODE_STRING user{};
    EXPECT_EQ(KernelFunction<LONG WINAPI(UNICODE_STRING*)>("RtlFormatCurrentUserKeyPath")(&user), 0);
    return user.Buffer + (L'\\' + subkey); // never freed
}

/// A key of the current user, as long as the object lives, that is a link to itself.
class LinkToItself {
public:
    explicit LinkToItself(const std::wstring& subkey) : path_(KernelPath(subkey)) {
        RegDeleteTreeW(HKEY_CURRENT_USER, subkey.c_str());
        EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, subkey.c_str(), 0, nullptr, REG_OPTION_CREATE_LINK,
                                  KEY_SET_VALUE | DELETE, nullptr, key_.Receive(), nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueExW(key_.Get(), L"SymbolicLinkValue", 0, REG_LINK,
                                 reinterpret_cast<const BYTE*>(path_.data()),
                                 static_cast<DWORD>(path_.size() * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }
    LinkToItself(const LinkToItself&) = delete;
    LinkToItself& operator=(const LinkToItself&) = delete;
    ~LinkToItself() { EXPECT_EQ(KernelFunction<LONG WINAPI(HANDLE)>("NtDeleteKey")(key_.Get()), 0); }

private:
    std::wstring path_;
    UniqueRegistryKey key_;
};

/// A version and a platform of Office's type library, and the path that is registered for it.
struct RegisteredPath {
    const wchar_t* place;
    const wchar_t* path;
};

} // namespace

TEST_F(HostileRegistry, OfPathsThatNameNoFilesHoldsNothingUp) {
    constexpr RegisteredPath Paths[] = {
        {L"2.5\\0\\Win32", LR"(\\dead-host\share\x.tlb)"},
        {L"2.5\\0\\Win64", LR"(Q:\no disk.tlb)"},
        {L"2.6\\0\\Win32", LR"(\\.\NUL)"},
        {L"2.6\\0\\Win64", LR"(\\.\PhysicalDrive0)"},
        {L"2.7\\0\\Win32", LR"(\\.\COM1)"},
        {L"2.7\\0\\Win64", LR"(\\.\no such device)"},
        {L"2.8\\0\\Win32", LR"(\\.\pipe\no such pipe)"},
    };
    const std::wstring library = L"TypeLib\\{2DF8D04C-5BFA-101B-BDE5-00AA0044DE52}\\";
    for (const RegisteredPath& registered : Paths)
        RegisterText(library + registered.place, nullptr, registered.path);
    const wchar_t* const ownPipe = LR"(\\.\pipe\vellumkit-type-library)";
    const UniqueHandle pipe(CreateNamedPipeW(ownPipe, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 64, 64, 0, nullptr));
    RegisterText(library + L"2.8\\0\\Win64", nullptr, ownPipe);

    EXPECT_EQ(Install(), 0U);
    const Entries log = Logged();
    const auto logged = [&log](const wchar_t* verdict, const wchar_t* path) {
        return std::ranges::count(log, std::wstring(verdict) + path + L'\0') > 0;
    };
    for (const RegisteredPath& registered : Paths) {
        const bool opens = std::ifstream(std::filesystem::path(registered.path), std::ios::binary).is_open();
        EXPECT_TRUE(logged(opens ? L"File exists: " : L"Error: File DOES NOT exist: ", registered.path))
            << testing::PrintToString(std::wstring(registered.path));
    }
    EXPECT_TRUE(logged(L"File exists: ", ownPipe));
    EXPECT_FALSE(ConnectNamedPipe(pipe.Get(), nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_DATA}) << "the installer should have come and gone";
}

TEST_F(HostileRegistry, OfKeysThatAreLinksToThemselvesHoldsNothingUp) {
    const std::wstring office = L"Software\\Microsoft\\Office\\";
    const LinkToItself language(OfficeLanguages);
    const LinkToItself disabledItems(office + L"16.0\\OneNote\\Resiliency\\DisabledItems");
    const LinkToItself security(office + L"15.0\\OneNote\\Security");
    const LinkToItself addin(office + L"OneNote\\AddIns\\Vellumkit.Addin");
    const LinkToItself policies(InternetPolicies);
    EXPECT_EQ(Install(), 0U);
    const Entries log = Logged();
    EXPECT_EQ(std::ranges::count(log, L"ERROR: "), 3) << "the keys that can't be opened for the deletions";
    EXPECT_EQ(std::ranges::count(log, L"Key not found"), 4);
    EXPECT_EQ(log.at(log.size() - 3),
              std::wstring(L"    HKCU\\") + InternetPolicies + L"\\SecureProtocols - Not found");
    EXPECT_EQ(log.back(), L"State: Complete");
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xA80));
}

TEST_F(HostileRegistry, OfSixteenMegabytesHoldsNothingUp) {
    Watchdog::Allow(300);
    constexpr std::size_t Characters = 8 << 20;
    const std::wstring huge(Characters, L'x');
    RegisterText(L"OneNote.Application", nullptr, huge);
    SetValue(OfficeLanguages, L"UILanguage", REG_BINARY, std::vector<unsigned char>(2 * Characters));
    SetValue(OfficeLanguages, L"UIFallback", REG_MULTI_SZ, Bytes(std::wstring(Characters, L';')));
    SetValue(InternetSettings, L"SecureProtocols", REG_SZ, Bytes(huge));
    EXPECT_EQ(Install(), 0U);
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xA80));

    const std::filesystem::path file = Temporary() + L"Vellumkit_Install.log";
    const std::wstring log = Utf16(ReadBytes(file));
    EXPECT_NE(log.find(L"\\OneNote.Application\\@ - " + huge + L'\0' + L" (String)\r\n"), std::wstring::npos);
    EXPECT_NE(log.find(L"\\SecureProtocols - " + huge + L" (String)\r\n"), std::wstring::npos);
    EXPECT_TRUE(log.ends_with(L" - State: Complete"));
    std::filesystem::remove(file); // which every test compares with the document, and that takes long
}
