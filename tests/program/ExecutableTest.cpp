// What the release executable is made of.

#include "tests/support/ImportTable.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/LogText.h"
#include "tests/support/Machine.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <set>
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

    HMODULE module_ = nullptr;
};

std::string Lower(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::wstring VersionOf(DWORD upper, DWORD lower) {
    std::wostringstream text;
    text << HIWORD(upper) << L'.' << LOWORD(upper) << L'.' << HIWORD(lower) << L'.' << LOWORD(lower);
    return text.str();
}

} // namespace

TEST_F(Executable, ImportsOnlyLibrariesThatShipWithWindows) {
    const std::set<std::string> shipped{
        "advapi32.dll", "gdi32.dll", "gdiplus.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
        "oleaut32.dll", "psapi.dll", "shell32.dll", "shlwapi.dll",  "user32.dll",
    };
    const std::vector<ImportedFunction> imports = ImportsOf(module_);
    EXPECT_GT(imports.size(), 50U);
    for (const ImportedFunction& function : imports)
        EXPECT_TRUE(shipped.contains(Lower(function.library))) << function.library;
}

// The front-end of this test calls DeleteFileW where it would load shcore.dll, and so deletes a file of that name.
// Where its entry point would set the handler of an abort, which is its first call into a library, it ends.
TEST_F(Executable, SetsItsDpiAwarenessBeforeItsEntryPointCallsAnything) {
    const std::filesystem::path program = CopyFrontEndThatCalls("DeleteFileW", "LoadLibraryExW");
    LetCall(program, "exit", "signal");
    const std::filesystem::path folder = std::filesystem::path(Temporary()) / "current";
    const std::filesystem::path library = folder / "shcore.dll";
    std::filesystem::create_directory(folder);
    std::ofstream(library) << "no library";
    EXPECT_EQ(Program(program, L"", Temporary(), folder).ExitCode(), static_cast<DWORD>(SIGABRT));
    EXPECT_FALSE(std::filesystem::exists(library));
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

TEST_F(Executable, EmbedsTheElevatedInstallerAsItIs) {
    const HRSRC resource = FindResourceW(module_, MAKEINTRESOURCEW(200), L"FILE");
    ASSERT_NE(resource, nullptr);
    const std::string embedded(static_cast<const char*>(LockResource(LoadResource(module_, resource))),
                               SizeofResource(module_, resource));
    EXPECT_TRUE(embedded == ReadBytes(ElevatedInstaller()));
}

TEST_F(Executable, TellsItsVersionInExplorer) {
    std::vector<char> data(GetFileVersionInfoSizeW(FrontEnd().c_str(), nullptr));
    ASSERT_TRUE(GetFileVersionInfoW(FrontEnd().c_str(), 0, static_cast<DWORD>(data.size()), data.data()));
    void* value = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(data.data(), L"\\", &value, &size));
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(value);
    EXPECT_EQ(VersionOf(fixed.dwProductVersionMS, fixed.dwProductVersionLS), Version() + L".0");
    EXPECT_EQ(VersionOf(fixed.dwFileVersionMS, fixed.dwFileVersionLS), Version() + L".0");
    const std::pair<const wchar_t*, std::wstring> texts[] = {
        {L"ProductVersion", Version()},
        {L"FileVersion", Version()},
        {L"ProductName", L"Vellumkit"},
        {L"FileDescription", L"Vellumkit Installer"},
        {L"Comments", L"https://www.vellumkit.example"},
        {L"OriginalFilename", L"VellumkitInstaller.x64.exe"},
    };
    for (const auto& [name, expected] : texts) {
        ASSERT_TRUE(
            VerQueryValueW(data.data(), (std::wstring(L"\\StringFileInfo\\040904B0\\") + name).c_str(), &value, &size));
        EXPECT_EQ(static_cast<const wchar_t*>(value), expected);
    }
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
