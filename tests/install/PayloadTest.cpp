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
#include <functional>
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
        Asked = {};
        Error = ERROR_SUCCESS;
        Process = nullptr;
        Meanwhile = [] {};
    }

    static bool WasAsked() { return Asked.cbSize != 0; }

    static inline SHELLEXECUTEINFOW Asked;
    static inline std::wstring File, Parameters;
    static inline DWORD Error;
    static inline HANDLE Process;
    /// What others do while the shell works.
    static inline std::function<void()> Meanwhile;

private:
    ImportPatch<decltype(ShellExecuteExW)> patch_{"ShellExecuteExW", [](SHELLEXECUTEINFOW* execution) -> BOOL {
                                                      Meanwhile();
                                                      Asked = *execution;
                                                      File = execution->lpFile;
                                                      Parameters = execution->lpParameters;
                                                      execution->hProcess = Process;
                                                      SetLastError(Error);
                                                      return Error == ERROR_SUCCESS;
                                                  }};
};

/// Others get at the file between its writing and the moment it is kept from changing.
class ChangedPayload : public ShellExecution {
protected:
    static inline std::function<void()> Change;

private:
    static inline auto* const Open = ImportedNow<decltype(CreateFileW)>("CreateFileW");

    ImportPatch<decltype(CreateFileW)> patch_{
        "CreateFileW",
        [](LPCWSTR path, DWORD access, DWORD others, LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
           HANDLE model) -> HANDLE {
            if (access == GENERIC_READ) // this call keeps the file
                Change();
            return Open(path, access, others, security, disposition, flags, model);
        }};
};

struct OtherContent {
    const char* name;
    /// Of the payload's bytes.
    std::string (*made)(const std::string& payload);
};

class PayloadOfOtherBytes : public ChangedPayload, public testing::WithParamInterface<OtherContent> {};

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

TEST_F(Payload, FileThatSomebodyHasOpenIsReplacedWhenHeSharesIt) {
    fs::create_directory(Folder());
    std::ofstream(fs::path(File())) << "before";
    const UniqueHandle other(CreateFileW(File().c_str(), GENERIC_READ | GENERIC_WRITE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(other);
    EXPECT_TRUE(WriteBytesToFile(File(), std::string("x")));
    EXPECT_EQ(ReadBytes(File()), "x");
}

TEST_F(Payload, FileThatCannotBeWrittenIsOnlyToldApart) {
    fs::create_directory(Folder());
    bool whole = false;
    EXPECT_TRUE(WriteBytesToFile(File(), std::string("x"), &whole));
    EXPECT_TRUE(whole);
    {
        const ImportPatch<decltype(WriteFile)> write(
            "WriteFile", [](HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED) -> BOOL { return FALSE; });
        EXPECT_TRUE(WriteBytesToFile(File(), std::string("x")));
        EXPECT_TRUE(WriteBytesToFile(File(), std::string("x"), &whole));
        EXPECT_FALSE(whole);
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

TEST_F(ShellExecution, HappensWhileNobodyCanChangeTheFile) {
    static std::vector<DWORD> errors;
    errors.clear();
    Meanwhile = [] {
        const std::wstring file = Payload::File();
        constexpr DWORD Everything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        for (const DWORD access : {DWORD{GENERIC_WRITE}, DWORD{FILE_APPEND_DATA}, DWORD{DELETE}}) {
            const UniqueHandle other(CreateFileW(file.c_str(), access, Everything, nullptr, OPEN_EXISTING, 0, nullptr));
            errors.push_back(other ? ERROR_SUCCESS : GetLastError());
        }
        errors.push_back(DeleteFileW(file.c_str()) ? ERROR_SUCCESS : GetLastError());
        errors.push_back(MoveFileExW(file.c_str(), (file + L".old").c_str(), 0) ? ERROR_SUCCESS : GetLastError());
        const UniqueHandle reader(
            CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(reader) << "the system opens a program so to start it";
    };
    ExtractAndRunInstaller();
    EXPECT_EQ(errors, std::vector<DWORD>(5, ERROR_SHARING_VIOLATION));
    EXPECT_TRUE(DeleteFileW(Payload::File().c_str())) << "nothing keeps the file any longer";
}

TEST_F(ShellExecution, ThatFailsLeavesTheFileToOthers) {
    Error = ERROR_CANCELLED;
    ThrownBy(ExtractAndRunInstaller);
    EXPECT_TRUE(DeleteFileW(Payload::File().c_str()));
}

TEST_F(ShellExecution, HappensForAFileThatSomebodyElseHasOpenForWriting) {
    fs::create_directory(Payload::Folder());
    const UniqueHandle other(CreateFileW(Payload::File().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         nullptr, CREATE_ALWAYS, 0, nullptr));
    ASSERT_TRUE(other);
    ExtractAndRunInstaller();
    EXPECT_TRUE(WasAsked());
}

TEST_F(ShellExecution, HappensForAFileThatCannotBeRead) {
    const ImportPatch<decltype(ReadFile)> read("ReadFile", [](HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED) -> BOOL {
        SetLastError(ERROR_IO_DEVICE);
        return FALSE;
    });
    ExtractAndRunInstaller();
    EXPECT_TRUE(WasAsked());
}

TEST_F(ShellExecution, DoesNotHappenForAFileThatSomebodyLocks) {
    const ImportPatch<decltype(ReadFile)> read("ReadFile", [](HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED) -> BOOL {
        SetLastError(ERROR_LOCK_VIOLATION);
        return FALSE;
    });
    EXPECT_EQ(ThrownBy([] { ExtractAndRunInstaller(); }), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    EXPECT_FALSE(WasAsked());
}

TEST_F(ShellExecution, HappensForAFileThatWasNotWrittenWhole) {
    static auto* const write = ImportedNow<decltype(WriteFile)>("WriteFile");
    const ImportPatch<decltype(WriteFile)> full(
        "WriteFile", [](HANDLE file, LPCVOID bytes, DWORD size, LPDWORD count, LPOVERLAPPED overlapped) -> BOOL {
            return write(file, bytes, std::min(size, DWORD{1000}), count, overlapped);
        });
    ExtractAndRunInstaller();
    EXPECT_TRUE(WasAsked());
    EXPECT_EQ(ReadBytes(Payload::File()), PayloadBytes().substr(0, 1000));
}

TEST_F(ChangedPayload, IsStartedWithTheBytesThatItHad) {
    static int changes;
    changes = 0;
    Change = [] {
        ++changes;
        std::ofstream(fs::path(Payload::File()), std::ios::binary) << PayloadBytes();
    };
    ExtractAndRunInstaller();
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(WasAsked());
}

TEST_F(ChangedPayload, ThatIsGoneIsLeftToTheShell) {
    Change = [] { fs::remove(Payload::File()); };
    Error = ERROR_FILE_NOT_FOUND;
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(WasAsked());
}

INSTANTIATE_TEST_SUITE_P(
    , PayloadOfOtherBytes,
    testing::Values(
        OtherContent{"OtherFirst", [](const std::string& bytes) { return '?' + bytes.substr(1); }},
        OtherContent{"OtherLast", [](const std::string& bytes) { return bytes.substr(0, bytes.size() - 1) + '?'; }},
        OtherContent{"OneLess", [](const std::string& bytes) { return bytes.substr(0, bytes.size() - 1); }},
        OtherContent{"OneMore", [](const std::string& bytes) { return bytes + '\0'; }},
        OtherContent{"HalfOfThem", [](const std::string& bytes) { return bytes.substr(0, bytes.size() / 2); }},
        OtherContent{"NoBytes", [](const std::string&) { return std::string(); }},
        OtherContent{"AnotherProgram", [](const std::string&) { return ReadBytes(Datebookery()); }}),
    [](const auto& item) { return item.param.name; });

TEST_P(PayloadOfOtherBytes, IsNotStarted) {
    Change = [] { std::ofstream(fs::path(Payload::File()), std::ios::binary) << GetParam().made(PayloadBytes()); };
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    EXPECT_FALSE(WasAsked());
    EXPECT_EQ(Logged().back(), L"    Done.");
    EXPECT_TRUE(ReadBytes(Payload::File()) == GetParam().made(PayloadBytes())) << "it stays as it was found";
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

TEST_F(Payload, WhoseSizeIsUnknownIsAResourceError) {
    const ImportPatch<decltype(SizeofResource)> measure("SizeofResource", [](HMODULE, HRSRC) -> DWORD { return 0; });
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), ErrorReadResource);
    EXPECT_EQ(Logged().back(), L"    Size of the file is: 0");
}

TEST_F(Payload, ThatCannotBeWrittenFailsWithTheSystemsCode) {
    fs::create_directories(File()); // a folder stands where the file should be
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), E_ACCESSDENIED);
    EXPECT_EQ(Logged().back(), L"    Writing to the given path");
}

TEST_F(Payload, ThatCannotBeWrittenWithoutACodeFailsWithZero) {
    const ImportPatch<decltype(CreateFileW)> open("CreateFileW",
                                                  [](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD,
                                                     HANDLE) -> HANDLE { return INVALID_HANDLE_VALUE; });
    // What went before left a code behind.
    const ImportPatch<decltype(LockResource)> lock("LockResource", [](HGLOBAL) -> LPVOID {
        SetLastError(ERROR_NOT_SUPPORTED);
        static char payload[1] = {};
        return payload;
    });
    EXPECT_EQ(ThrownBy(ExtractAndRunInstaller), 0);
}
