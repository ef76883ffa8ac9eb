// Unattended installations with the real executable: what it does to files and settings, what it logs, how it ends.

#include "tests/support/LabPrograms.h"
#include "tests/support/LogText.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

class Installation : public Machine {
protected:
    using Machine::Machine;

    std::wstring PayloadCall(const std::wstring& configuration) const {
        return L'"' + Target() + L"\" " + Temporary() + L' ' + configuration;
    }

    /// The log of a pass whose payload could not be written.
    Entries LogUpToWriting(bool folderExists) const {
        Entries entries = Joined({LogOfSearch(), LogOfExtraction(folderExists)});
        entries.resize(entries.size() - 2); // "    Done." and the wait
        return entries;
    }
};

class InstallationInAFolderWithBlanks : public Installation {
protected:
    InstallationInAFolderWithBlanks() : Installation(L" with blanks in it") {}
};

class InstallationInAFolderWithForeignLetters : public Installation {
protected:
    InstallationInAFolderWithForeignLetters() : Installation(L" Љубав 重試 ğ") {}
};

struct ExitCodeCase {
    const char* name;
    /// As the configuration file has it.
    const wchar_t* text;
    DWORD code;
    /// Null: the system's.
    const wchar_t* errorText;
};

class InstallerExitCode : public Installation, public testing::WithParamInterface<ExitCodeCase> {};

} // namespace

TEST_F(Installation, Succeeds) {
    const std::wstring configuration = Configuration(L"0");
    EXPECT_EQ(Install(configuration), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair()}));
    EXPECT_EQ(PayloadCommandLine(), PayloadCall(configuration));
    EXPECT_EQ(ReadBytes(Target()), ReadBytes(ElevatedInstaller()));
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xA80));
}

TEST_F(Installation, RemovesWhatDisablesTheAddin) {
    const std::wstring office = L"Software\\Microsoft\\Office\\";
    SetDword((office + L"16.0\\OneNote\\Resiliency\\DisabledItems").c_str(), L"Item", 1);
    SetDword((office + L"16.0\\OneNote\\Security").c_str(), L"DisableAllAddins", 1);
    SetDword((office + L"OneNote\\AddIns\\Vellumkit.Addin").c_str(), L"LoadBehavior", 2);
    EXPECT_EQ(Install(), 0U);
    EXPECT_FALSE(KeyExists((office + L"16.0\\OneNote\\Resiliency\\DisabledItems").c_str()));
    EXPECT_EQ(GetValue((office + L"16.0\\OneNote\\Security").c_str(), L"DisableAllAddins"), std::nullopt);
    EXPECT_EQ(GetValue((office + L"OneNote\\AddIns\\Vellumkit.Addin").c_str(), L"LoadBehavior"), std::nullopt);
    // One "Key not found" less for each of the three.
    EXPECT_EQ(std::ranges::count(Logged(), L"Key not found"), 4);
}

TEST_F(Installation, SucceedsAgainStraightAfterTheFirst) {
    EXPECT_EQ(Install(), 0U);
    EXPECT_EQ(Install(), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(true), LogOfRepair(L"2688 (DWORD)", {})}));
}

TEST_F(Installation, WaitsForAnInstallerThatTakesLong) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    const std::wstring configuration = Configuration(L"7", 2500);
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(Install(configuration), 1U);
    EXPECT_GE(GetTickCount64() - start, 2500U);
}

TEST_F(Installation, HandsOnAPathThatNamesNoFile) {
    EXPECT_EQ(Install(L"no such file"), 0U);
    EXPECT_EQ(PayloadCommandLine(), PayloadCall(L"no such file"));
}

TEST_P(InstallerExitCode, IsShownAsAnHresult) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    const ExitCodeCase& item = GetParam();
    EXPECT_EQ(Install(Configuration(item.text)), 1U);
    const std::wstring errorText =
        item.errorText != nullptr ? item.errorText : SystemErrorText(static_cast<HRESULT>(item.code));
    ExpectLog(Joined({LogOfSearch(),
                      LogOfExtraction(),
                      {L"ERROR: Installer reported failure: " + std::to_wstring(item.code), LogOfFailure(errorText)}}));
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    , InstallerExitCode,
    testing::Values(
        ExitCodeCase{"One", L"1", 1, nullptr},
        ExitCodeCase{"TemporaryFile", L"-99", 4294967197,
                     L"Failed to create temporary file. Make sure you have enough disk space and then click "
                     L"Retry. (0xffffff9d)"},
        ExitCodeCase{"ReadResource", L"-100", 4294967196, L"Failed to read installation resource. (0xffffff9c)"},
        ExitCodeCase{"StillActive", L"259", STILL_ACTIVE, nullptr},
        ExitCodeCase{"RestartRequired", L"3010", ERROR_SUCCESS_REBOOT_REQUIRED, nullptr},
        ExitCodeCase{"TheHighestPositive", L"2147483647", 2147483647, nullptr},
        ExitCodeCase{"TheLowestNegative", L"-2147483648", 2147483648, nullptr},
        ExitCodeCase{"Unspecified", L"2147500037", 0x80004005, nullptr},
        ExitCodeCase{"AccessDenied", L"2147942405", 0x80070005, nullptr},
        ExitCodeCase{"Crash", L"3221225477", STATUS_ACCESS_VIOLATION, nullptr},
        ExitCodeCase{"TheHighest", L"4294967295", 4294967295, L"Unknown error 0xFFFFFFFF (0xffffffff)"}),
    [](const auto& item) { return item.param.name; });

// The temporary folder

TEST_F(InstallationInAFolderWithBlanks, HandsTheFolderOnUnquoted) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    const std::wstring configuration = Configuration(L"0");
    EXPECT_EQ(Install(configuration), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair()}));
    EXPECT_EQ(PayloadCommandLine(), PayloadCall(configuration));
    EXPECT_EQ(Install(Configuration(L"3")), 1U) << "the payload should have found its configuration";
}

TEST_F(InstallationInAFolderWithForeignLetters, Succeeds) {
    const std::wstring configuration = Configuration(L"0");
    EXPECT_EQ(Install(configuration), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair()}));
    EXPECT_EQ(PayloadCommandLine(), PayloadCall(configuration));
}

TEST_F(Installation, UsesATargetFolderThatExists) {
    fs::create_directory(Temporary() + L"Vellumkit");
    EXPECT_EQ(Install(), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(true), LogOfRepair()}));
}

TEST_F(Installation, UsesATargetFolderThatIsMarkedReadOnly) {
    // On folders the mark is for the shell; it keeps nobody from making files in them.
    fs::create_directory(Temporary() + L"Vellumkit");
    SetFileAttributesW((Temporary() + L"Vellumkit").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Install(), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(true), LogOfRepair()}));
}

TEST_F(Installation, FailsWhenTheTargetFolderIsAFile) {
    ExpectVerdict(Verdict::Failed, L"payload");
    std::ofstream(fs::path(Temporary() + L"Vellumkit")) << "x";
    EXPECT_EQ(Install(), 1U);
    ExpectLog(Joined({LogOfSearch(),
                      {L"Folder path is: " + Temporary() + L"Vellumkit", L"Folder does not exist, creating...",
                       LogOfFailure(SystemErrorText(HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS)))}}));
}

TEST_F(Installation, ReplacesATargetFileThatIsThere) {
    fs::create_directory(Temporary() + L"Vellumkit");
    std::ofstream(fs::path(Target())) << std::string(5000000, 'x');
    EXPECT_EQ(Install(), 0U);
    EXPECT_EQ(ReadBytes(Target()), ReadBytes(ElevatedInstaller()));
}

TEST_F(Installation, FailsWhenTheTargetFileIsLocked) {
    ExpectVerdict(Verdict::Failed, L"payload");
    fs::create_directory(Temporary() + L"Vellumkit");
    const UniqueHandle lock(
        CreateFileW(Target().c_str(), GENERIC_READ, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_EQ(Install(), 1U);
    ExpectLog(
        Joined({LogUpToWriting(true), {LogOfFailure(SystemErrorText(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION)))}}));
}

TEST_F(Installation, FailsWhenAFolderStandsWhereTheTargetFileShouldBe) {
    ExpectVerdict(Verdict::Failed, L"payload");
    fs::create_directories(Target());
    EXPECT_EQ(Install(), 1U);
    ExpectLog(Joined({LogUpToWriting(true), {LogOfFailure(SystemErrorText(E_ACCESSDENIED))}}));
}

TEST_F(Installation, IsNotHeldUpByALogThatCannotBeOpened) {
    ExpectVerdict(Verdict::Unreadable);
    fs::create_directory(Temporary() + L"Vellumkit_Install.log");
    const std::wstring configuration = Configuration(L"0");
    EXPECT_EQ(Install(configuration), 0U);
    EXPECT_EQ(PayloadCommandLine(), PayloadCall(configuration));
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xA80));
}

TEST_F(Installation, FailsWithoutALogWhenTheTemporaryFolderIsMissing) {
    const fs::path missing = fs::path(Temporary()) / L"missing";
    EXPECT_EQ(Program(FrontEnd(), L"/config x", missing).ExitCode(), 1U);
    EXPECT_TRUE(fs::is_empty(Temporary()));
}

// The payload

namespace {

/// Replaces the embedded payload of a copy of the front-end; with null bytes no resource of that kind is left.
void EmbedPayload(const fs::path& program, const char* bytes) {
    const HANDLE update = BeginUpdateResourceW(program.c_str(), bytes == nullptr);
    ASSERT_NE(update, nullptr);
    std::string data = bytes != nullptr ? bytes : "another resource";
    const WORD id = bytes != nullptr ? 200 : 201;
    EXPECT_TRUE(UpdateResourceW(update, L"FILE", MAKEINTRESOURCEW(id), MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US),
                                data.data(), static_cast<DWORD>(data.size())));
    EXPECT_TRUE(EndUpdateResourceW(update, FALSE));
}

} // namespace

TEST_F(Installation, FailsWhenThePayloadIsNoProgramAndTheShellsMessageIsClosed) {
    ExpectVerdict(Verdict::Failed, L"elevation");
    const fs::path file = CopyFrontEnd();
    EmbedPayload(file, "no program");
    const Program frontEnd(file, L"/config x", Temporary());
    PostMessageW(AwaitWindow(frontEnd, L"#32770"), WM_COMMAND, IDOK, 0);
    EXPECT_EQ(frontEnd.ExitCode(), 1U);
    EXPECT_EQ(ReadBytes(Target()), "no program");
    // Wine's shell loses the code behind its message box.
    const std::wstring expected = LogOfFailure(SystemErrorText(HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT)));
    const std::wstring lost = LogOfFailure(SystemErrorText(0));
    EXPECT_TRUE(Logged().back() == expected || Logged().back() == lost) << testing::PrintToString(Logged().back());
}

TEST_F(Installation, FailsWhenThePayloadIsMissing) {
    ExpectVerdict(Verdict::Failed, L"payload");
    const fs::path program = CopyFrontEnd();
    EmbedPayload(program, nullptr);
    EXPECT_EQ(Program(program, L"/config x", Temporary()).ExitCode(), 1U);
    Entries expected = LogUpToWriting(false);
    expected.resize(expected.size() - 2); // from the size on
    ExpectLog(Joined({expected, {LogOfFailure(L"Failed to read installation resource. (0xffffff9c)")}}));
}

// The protocols

TEST_F(Installation, AddsTheProtocolsThatAreMissing) {
    SetDword(InternetSettings, L"SecureProtocols", 0xA0);
    EXPECT_EQ(Install(), 0U);
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xAA0));
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair(L"160 (DWORD)", {L"Updated to 2720"})}));
}

TEST_F(Installation, LeavesAllProtocolsAsTheyAre) {
    SetDword(InternetSettings, L"SecureProtocols", 0xAA8);
    EXPECT_EQ(Install(), 0U);
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xAA8));
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair(L"2728 (DWORD)", {})}));
}

TEST_F(Installation, ReplacesProtocolsOfAnotherType) {
    SetValue(InternetSettings, L"SecureProtocols", REG_SZ, Bytes(L"all of them"));
    EXPECT_EQ(Install(), 0U);
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xA80));
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair(L"all of them (String)", {L"Updated to 2688"})}));
}

TEST_F(Installation, ReportsAPolicyAndLeavesItAsItIs) {
    SetDword(InternetPolicies, L"SecureProtocols", 0x80);
    EXPECT_EQ(Install(), 0U);
    EXPECT_EQ(GetValue(InternetPolicies, L"SecureProtocols"), Dword(0x80));
    const Entries log = Logged();
    ASSERT_GE(log.size(), 3U);
    EXPECT_EQ(log[log.size() - 3], std::wstring(L"    HKCU\\") + InternetPolicies + L"\\SecureProtocols - 128 (DWORD)");
}
