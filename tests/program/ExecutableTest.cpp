// What the release executables are made of.

#include "app/AbnormalEnd.h"
#include "core/Product.h"
#include "tests/support/ImportTable.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/LogText.h"
#include "tests/support/Machine.h"
#include "tests/support/TestFolder.h"
#include "tests/support/WaitUntil.h"

#include <imagehlp.h>
#include <psapi.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <set>
#include <span>
#include <sstream>

namespace {

class Executable : public Machine {
protected:
    void SetUp() override {
        Machine::SetUp();
        module_ = LoadLibraryExW(FrontEnd().c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
        ASSERT_NE(module_, nullptr);
    }
    void TearDown() override {
        FreeLibrary(module_);
        Machine::TearDown();
    }

    const IMAGE_DATA_DIRECTORY& Directory(int entry) const {
        return HeadersOf(module_).OptionalHeader.DataDirectory[entry];
    }
    /// What the module has at that address, which is relative to it.
    template <typename Structure>
    const Structure* At(DWORD address) const {
        return reinterpret_cast<const Structure*>(reinterpret_cast<ULONG_PTR>(module_) + address);
    }
    /// Where the loader changes an address when it maps the module elsewhere.
    std::set<DWORD> RelocatedAddresses() const {
        std::set<DWORD> addresses;
        const IMAGE_DATA_DIRECTORY& directory = Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC);
        const DWORD end = directory.VirtualAddress + directory.Size;
        for (DWORD block = directory.VirtualAddress; block < end;) {
            const auto& header = *At<IMAGE_BASE_RELOCATION>(block);
            const DWORD next = block + header.SizeOfBlock;
            for (DWORD entry = block + sizeof header; entry < next; entry += sizeof(WORD))
                addresses.insert(header.VirtualAddress + (*At<WORD>(entry) & 0xFFF));
            block = next;
        }
        return addresses;
    }

    HMODULE module_ = nullptr;
};

std::string Lower(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::set<std::string> LibrariesIn(const Program& program) {
    std::array<HMODULE, 256> modules{};
    DWORD size = 0;
    EXPECT_TRUE(EnumProcessModules(program.Handle(), modules.data(), sizeof modules, &size));
    std::set<std::string> names;
    for (const HMODULE module : std::span(modules).first(size / sizeof(HMODULE))) {
        std::array<char, MAX_PATH> name{};
        GetModuleBaseNameA(program.Handle(), module, name.data(), static_cast<DWORD>(name.size()));
        names.insert(Lower(name.data()));
    }
    return names;
}

std::wstring VersionOf(DWORD upper, DWORD lower) {
    std::wostringstream text;
    text << HIWORD(upper) << L'.' << LOWORD(upper) << L'.' << HIWORD(lower) << L'.' << LOWORD(lower);
    return text.str();
}

/// What a program of the product tells of itself, and the texts beyond that.
void ExpectVersionInformation(const std::filesystem::path& program, const std::wstring& version,
                              std::vector<std::pair<const wchar_t*, std::wstring>> texts) {
    std::vector<char> data(GetFileVersionInfoSizeW(program.c_str(), nullptr));
    ASSERT_TRUE(GetFileVersionInfoW(program.c_str(), 0, static_cast<DWORD>(data.size()), data.data()));
    void* value = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(data.data(), L"\\", &value, &size));
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(value);
    EXPECT_EQ(VersionOf(fixed.dwProductVersionMS, fixed.dwProductVersionLS), version + L".0");
    EXPECT_EQ(VersionOf(fixed.dwFileVersionMS, fixed.dwFileVersionLS), version + L".0");
    texts.insert(texts.end(), {{L"ProductVersion", version},
                               {L"FileVersion", version},
                               {L"ProductName", L"Vellumkit"},
                               {L"OriginalFilename", program.filename().wstring()}});
    for (const auto& [name, expected] : texts) {
        ASSERT_TRUE(
            VerQueryValueW(data.data(), (std::wstring(L"\\StringFileInfo\\040904B0\\") + name).c_str(), &value, &size));
        EXPECT_EQ(static_cast<const wchar_t*>(value), expected);
    }
}

} // namespace

TEST_F(Executable, IsLoadedWithTwoLibrariesThatWindowsKnows) {
    std::set<std::string> libraries;
    for (const ImportedFunction& function : ImportsOf(module_))
        libraries.insert(Lower(function.library));
    EXPECT_EQ(libraries, (std::set<std::string>{"kernel32.dll", "msvcrt.dll"}));
}

// The front-end of this test calls DeleteFileW where it would load a library. So it deletes a file of the name of
// shcore.dll, does not find a function in it, and ends where it would load user32.dll. Were it in its entry point then,
// it would have ended in another way: its first call there, which sets the handler of an abort, is one of exit.
TEST_F(Executable, SetsItsDpiAwarenessBeforeItsEntryPointCallsAnything) {
    const std::filesystem::path program = CopyFrontEndThatCalls("DeleteFileW", "LoadLibraryExW");
    LetCall(program, "exit", "signal");
    const std::filesystem::path folder = std::filesystem::path(Temporary()) / "current";
    const std::filesystem::path library = folder / "shcore.dll";
    std::filesystem::create_directory(folder);
    std::ofstream(library) << "no library";
    EXPECT_EQ(Program(program, L"", Temporary(), folder).ExitCode(), AbnormalExitCode);
    EXPECT_FALSE(std::filesystem::exists(library));
}

// What limits the search ends the process instead, before DeleteFileW in the place of the first load.
TEST_F(Executable, LimitsTheSearchForLibrariesBeforeItLoadsOne) {
    const std::filesystem::path program = CopyFrontEndThatCalls("ExitProcess", "SetDllDirectoryW");
    LetCall(program, "DeleteFileW", "LoadLibraryExW");
    const std::filesystem::path folder = std::filesystem::path(Temporary()) / "current";
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "shcore.dll") << "no library";
    EXPECT_NE(Program(program, L"", Temporary(), folder).ExitCode(), AbnormalExitCode);
    EXPECT_TRUE(std::filesystem::exists(folder / "shcore.dll"));
}

// ExitProcess in the place of the function that is to be given the mode ends the process with it; where it stands for
// the loading of a library, it would end it with something else.
TEST_F(Executable, LetsCriticalErrorsShowNoBoxFromItsStart) {
    const std::filesystem::path program = CopyFrontEndThatCalls("ExitProcess", "SetThreadErrorMode");
    LetCall(program, "ExitProcess", "LoadLibraryExW");
    EXPECT_EQ(Program(program, L"/config x", Temporary()).ExitCode(),
              static_cast<DWORD>(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX));
    EXPECT_TRUE(Logged().empty());
}

TEST_F(Executable, LetsWindowsSearchForItsLibrariesInTheSystemFolderOnly) {
    const IMAGE_DATA_DIRECTORY& directory = Directory(IMAGE_DIRECTORY_ENTRY_LOAD_CONFIG);
    const auto& configuration = *At<IMAGE_LOAD_CONFIG_DIRECTORY64>(directory.VirtualAddress);
    EXPECT_EQ(directory.Size, configuration.Size);
    IMAGE_LOAD_CONFIG_DIRECTORY64 expected{};
    expected.Size = sizeof expected;
    expected.Reserved1 = 0x800; // DependentLoadFlags: LOAD_LIBRARY_SEARCH_SYSTEM32
    expected.SecurityCookie = configuration.SecurityCookie;
    EXPECT_EQ(std::memcmp(&configuration, &expected, sizeof expected), 0);
}

TEST_F(Executable, HasASecurityCookieThatWindowsChooses) {
    const auto& configuration =
        *At<IMAGE_LOAD_CONFIG_DIRECTORY64>(Directory(IMAGE_DIRECTORY_ENTRY_LOAD_CONFIG).VirtualAddress);
    const ULONGLONG address = configuration.SecurityCookie - HeadersOf(module_).OptionalHeader.ImageBase;
    const IMAGE_NT_HEADERS64& headers = HeadersOf(module_);
    const std::span sections(reinterpret_cast<const IMAGE_SECTION_HEADER*>(&headers + 1),
                             headers.FileHeader.NumberOfSections);
    const auto section = std::ranges::find_if(sections, [&](const IMAGE_SECTION_HEADER& header) {
        return address >= header.VirtualAddress && address - header.VirtualAddress < header.SizeOfRawData;
    });
    ASSERT_NE(section, sections.end());
    EXPECT_TRUE(section->Characteristics & IMAGE_SCN_MEM_WRITE);
    // In the file: Windows may have chosen already.
    ULONGLONG cookie = 0;
    ReadBytes(FrontEnd())
        .copy(reinterpret_cast<char*>(&cookie), sizeof cookie,
              address - section->VirtualAddress + section->PointerToRawData);
    EXPECT_EQ(cookie, 0x00002B992DDFA232U) << "the value that Microsoft's compiler gives it";
}

TEST_F(Executable, HasTheChecksumOfItsBytes) {
    DWORD inHeader = 0;
    DWORD computed = 0;
    ASSERT_EQ(MapFileAndCheckSumW(FrontEnd().c_str(), &inHeader, &computed), static_cast<DWORD>(CHECKSUM_SUCCESS));
    EXPECT_EQ(inHeader, computed);
}

// The slot of a function that is loaded with the program holds, in this mapping, the place of the function's name. That
// of a delay-loaded one holds an address, which the program's own one changes.
TEST_F(Executable, CallsDelayLoadedFunctionsWhereverItIsMapped) {
    const std::set<DWORD> relocated = RelocatedAddresses();
    const IMAGE_DATA_DIRECTORY& slots = Directory(IMAGE_DIRECTORY_ENTRY_IAT);
    int delayLoaded = 0;
    for (DWORD slot = slots.VirtualAddress; slot < slots.VirtualAddress + slots.Size; slot += sizeof(ULONG_PTR)) {
        if (*At<ULONG_PTR>(slot) < HeadersOf(module_).OptionalHeader.SizeOfImage)
            continue;
        ++delayLoaded;
        EXPECT_TRUE(relocated.contains(slot));
    }
    EXPECT_GT(delayLoaded, 50);
}

TEST_F(Executable, IsA64BitWindowedProgramWithHardening) {
    const IMAGE_NT_HEADERS64& headers = HeadersOf(module_);
    EXPECT_EQ(headers.FileHeader.Machine, IMAGE_FILE_MACHINE_AMD64);
    EXPECT_EQ(headers.OptionalHeader.Magic, IMAGE_NT_OPTIONAL_HDR64_MAGIC);
    EXPECT_EQ(headers.OptionalHeader.Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);
    EXPECT_FALSE(headers.FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED);
    const WORD hardening = headers.OptionalHeader.DllCharacteristics;
    EXPECT_TRUE(hardening & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(hardening & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA);
    EXPECT_TRUE(hardening & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
}

TEST_F(Executable, IsSmallBesideItsPayload) {
    constexpr std::uintmax_t Limit = __GNUC__ <= 12 ? 900'000 : 930'000; // a later run-time library is larger
    EXPECT_LT(std::filesystem::file_size(FrontEnd()) - std::filesystem::file_size(ElevatedInstaller()), Limit);
}

TEST_F(Executable, LoadsNoCryptographyAndWithoutAWindowNoPictures) {
    const TargetProgram datebookery;
    const Program frontEnd = Start(L"/config x");
    WaitUntil("the wait for Datebookery", [&] {
        return Utf16(ReadBytes(Temporary() + L"Vellumkit_Install.log")).find(L"Found process") != std::wstring::npos;
    });
    const std::set<std::string> libraries = LibrariesIn(frontEnd);
    EXPECT_TRUE(libraries.contains("kernel32.dll"));
    EXPECT_FALSE(libraries.contains("rsaenh.dll")) << "the provider of random numbers, for a stack guard";
    EXPECT_FALSE(libraries.contains("windowscodecs.dll")) << "which decodes the logo";
    datebookery.TellToEnd();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
}

TEST_F(Executable, EmbedsTheElevatedInstallerAsItIs) {
    const HRSRC resource = FindResourceW(module_, MAKEINTRESOURCEW(200), L"FILE");
    ASSERT_NE(resource, nullptr);
    const std::string embedded(static_cast<const char*>(LockResource(LoadResource(module_, resource))),
                               SizeofResource(module_, resource));
    EXPECT_TRUE(embedded == ReadBytes(ElevatedInstaller()));
}

TEST_F(Executable, TellsItsVersionInExplorer) {
    ExpectVersionInformation(
        FrontEnd(), Version(),
        {{L"FileDescription", L"Vellumkit Installer"}, {L"Comments", L"https://www.vellumkit.example"}});
}

TEST(LogReaderExecutable, TellsTheVersionOfTheInstallerInExplorer) {
    ExpectVersionInformation(ProgramFolder().parent_path() / "VellumkitLog.exe", ProductVersion,
                             {{L"FileDescription", L"Vellumkit Log Reader"}});
}

TEST_F(Executable, HasAManifestWithoutADpiEntry) {
    const HRSRC resource = FindResourceW(module_, CREATEPROCESS_MANIFEST_RESOURCE_ID, RT_MANIFEST);
    ASSERT_NE(resource, nullptr);
    const std::string manifest(static_cast<const char*>(LockResource(LoadResource(module_, resource))),
                               SizeofResource(module_, resource));
    for (const char* part : {"level=\"asInvoker\"", "Microsoft.Windows.Common-Controls", "version=\"6.0.0.0\"",
                             "supportedOS Id=\"{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}\""})
        EXPECT_NE(manifest.find(part), std::string::npos) << part;
    EXPECT_EQ(Lower(manifest).find("dpiaware"), std::string::npos);
}
