#include "install/Payload.h"

#include "core/ComError.h"
#include "core/Launch.h"
#include "core/TempPath.h"
#include "core/Unique.h"
#include "install/WorkerSignals.h"
#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/LogText.h"
#include "tests/support/TestFolder.h"

#include <shellapi.h>

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

/// The payload of the test program is the stand-in for the elevated installer.
class Payload : public testing::Test {
protected:
    void SetUp() override {
        InstanceHandle = GetModuleHandleW(nullptr);
        ConfigPath.clear();
        MainWindow = nullptr;
        fs::remove_all(Folder());
    }
    void TearDown() override {
        SetUp();
        InstanceHandle = nullptr;
    }

    static std::wstring Folder() { return TempPath(L"Vellumkit"); }
    static std::wstring File() { return TempPath(L"Vellumkit\\Vellumkit Installer.exe"); }

    Entries Logged() const { return log_.Get(); }

    /// What an extraction logs up to the size of the payload.
    static Entries UpToSize() {
        return {
            L"Folder path is: " + Folder(),
            L"Folder does not exist, creating...",
            L"Done.",
            L"Extracting installer to " + File(),
            L"    Installing file at resource id: 200 to path: " + File(),
            L"    Loading from resource",
            L"    Size of the file is: " + std::to_wstring(PayloadBytes().size()),
        };
    }

    static std::string PayloadBytes() { return ReadBytes(ElevatedInstaller()); }

private:
    LoggedEntries log_;
};

/// Records what the shell is asked to run, and runs nothing.
class ShellExecution : public Payload {
protected:
    void SetUp() override {
        Payload::SetUp();
        Error = ERROR_SUCCESS;
        Process = nullptr;
    }

    static inline SHELLEXECUTEINFOW Asked;
    static inline std::wstring File, Parameters;
    static inline DWORD Error;
    static inline HANDLE Process;

private:
    ImportPatch<decltype(ShellExecuteExW)> patch_{"ShellExecuteExW", [](SHELLEXECUTEINFOW* execution) -> BOOL {
                                                      Asked = *execution;
                                                      File = execution->lpFile;
                                                      Parameters = execution->lpParameters;
                                                      execution->hProcess = Process;
                                                      SetLastError(Error);
                                                      return Error == ERROR_SUCCESS;
                                                  }};
};

} // namespace

// EnsureFolder

TEST_F(Payload, FolderIsCreated) {
    EnsureFolder(Folder());
    EXPECT_TRUE(fs::is_directory(Folder()));
    EXPECT_EQ(Logged(), (Entries{L"Folder path is: " + Folder(), L"Folder does not exist, creating...", L"Done."}));
}

TEST_F(Payload, FolderThatExistsIsLeftAsItIs) {
    fs::create_directory(Folder());
    EnsureFolder(Folder());
    EXPECT_EQ(Logged(), (Entries{L"Folder path is: " + Folder(), L"Folder already exists"}));
}

TEST_F(Payload, FolderThatIsAFileFailsWithTheSystemsCode) {
    std::ofstream(fs::path(Folder())) << "x";
    EXPECT_EQ(ThrownBy([] { EnsureFolder(Folder()); }), HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(Logged(), (Entries{L"Folder path is: " + Folder(), L"Folder does not exist, creating..."}));
}

TEST_F(Payload, FolderGetsNoParents) {
    EXPECT_EQ(ThrownBy([] { EnsureFolder(TempPath(L"missing\\Vellumkit")); }),
              HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(fs::exists(TempPath(L"missing")));
}

TEST_F(Payload, FolderThatFailsWithoutACodeIsATemporaryFileError) {
    const ImportPatch<decltype(CreateDirectoryW)> create("CreateDirectoryW",
                                                         [](LPCWSTR, LPSECURITY_ATTRIBUTES) -> BOOL { return FALSE; });
    EXPECT_EQ(ThrownBy([] { EnsureFolder(Folder()); }), ErrorTempFile);
}

// WriteBytesToFile

TEST_F(Payload, FileIsCreatedOrReplaced) {
    fs::create_directory(Folder());
    const std::string bytes("\r\n\x1A\0z", 5);
    EXPECT_TRUE(WriteBytesToFile(File(), bytes));
    EXPECT_EQ(ReadBytes(File()), bytes);
    EXPECT_TRUE(WriteBytesToFile(File(), std::string("x")));
    EXPECT_EQ(ReadBytes(File()), "x");
    EXPECT_TRUE(WriteBytesToFile(File(), {}));
    EXPECT_EQ(ReadBytes(File()), "");
}

TEST_F(Payload, FileThatCannotBeOpenedIsToldWithItsCode) {
    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(WriteBytesToFile(TempPath(L"missing\\file"), {}));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

TEST_F(Payload, FileThatCannotBeWrittenIsNotNoticed) {
    fs::create_directory(Folder());
    {
        const ImportPatch<int(int, const void*, unsigned)> write("_write",
                                                                 [](int, const void*, unsigned) -> int { return -1; });
        EXPECT_TRUE(WriteBytesToFile(File(), std::string("x")));
    }
    EXPECT_EQ(ReadBytes(File()), "");
}

// ExtractAndRunInstaller

TEST_F(ShellExecution, IsAskedForExactlyThis) {
    MainWindow = reinterpret_cast<HWND>(ULONG_PTR{0x1234});
    ConfigPath = L"C:\\my folder\\lab.ini";
    Process = reinterpret_cast<HANDLE>(ULONG_PTR{0x5678});
    EXPECT_EQ(ExtractAndRunInstaller().Release(), Process);
    EXPECT_EQ(Asked.cbSize, 112U);
    EXPECT_EQ(Asked.fMask, 0x140U);
    EXPECT_EQ(Asked.hwnd, MainWindow);
    EXPECT_EQ(Asked.lpVerb, nullptr);
    EXPECT_EQ(File, Payload::File());
    EXPECT_EQ(Parameters, TempPath(L"") + L" C:\\my folder\\lab.ini");
    EXPECT_EQ(Asked.lpDirectory, nullptr);
    EXPECT_EQ(Asked.nShow, 0);
}

TEST_F(ShellExecution, WithoutConfigurationEndsInABlank) {
    EXPECT_FALSE(ExtractAndRunInstaller()) << "the shell started no process";
    EXPECT_EQ(Parameters, TempPath(L"") + L" ");
    EXPECT_EQ(Asked.hwnd, nullptr);
}

TEST_F(ShellExecution, ThatTheUserRefusesLeavesTheFile) {
    Error = ERROR_CANCELLED;
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), static_cast<HRESULT>(0x800704C7));
    EXPECT_EQ(ReadBytes(Payload::File()), PayloadBytes());
}

TEST_F(Payload, IsWrittenAsItIsAndRun) {
    const UniqueHandle process = ExtractAndRunInstaller();
    EXPECT_EQ(WaitForSingleObject(process.Get(), 30000), WAIT_OBJECT_0);
    EXPECT_EQ(ReadBytes(File()), PayloadBytes());
    EXPECT_EQ(ReadEntries(TempPath(L"Vellumkit_Elev.log"))[0],
              L"Command line: \"" + File() + L"\" " + TempPath(L"") + L" ");
    Entries expected = UpToSize();
    expected.emplace_back(L"    Writing to the given path");
    expected.emplace_back(L"    Done.");
    EXPECT_EQ(Logged(), expected);
}

TEST_F(Payload, ThatIsMissingIsAResourceError) {
    InstanceHandle = GetModuleHandleW(L"kernel32.dll"); // has no such resource
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), ErrorReadResource);
    EXPECT_EQ(Logged().back(), L"    Loading from resource");
}

TEST_F(Payload, ThatCannotBeLoadedIsAResourceError) {
    const ImportPatch<decltype(LoadResource)> load("LoadResource", [](HMODULE, HRSRC) -> HGLOBAL { return nullptr; });
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), ErrorReadResource);
    EXPECT_EQ(Logged(), UpToSize());
}

TEST_F(Payload, ThatCannotBeLockedIsAResourceError) {
    const ImportPatch<decltype(LockResource)> lock("LockResource", [](HGLOBAL) -> LPVOID { return nullptr; });
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), ErrorReadResource);
    EXPECT_EQ(Logged(), UpToSize());
}

TEST_F(Payload, ThatCannotBeWrittenFailsWithTheSystemsCode) {
    fs::create_directories(File()); // a folder stands where the file should be
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), E_ACCESSDENIED);
    EXPECT_EQ(Logged().back(), L"    Writing to the given path");
}

TEST_F(Payload, ThatCannotBeWrittenWithoutACodeFailsWithZero) {
    // The runtime opens files with CreateFileW of its own imports, so its open function is replaced.
    const ImportPatch<FILE*(const wchar_t*, const wchar_t*)> open(
        "_wfopen", [](const wchar_t*, const wchar_t*) -> FILE* { return nullptr; });
    // What went before left a code behind.
    const ImportPatch<decltype(LockResource)> lock("LockResource", [](HGLOBAL) -> LPVOID {
        SetLastError(ERROR_NOT_SUPPORTED);
        static char payload[1] = {};
        return payload;
    });
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), 0);
}
