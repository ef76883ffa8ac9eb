#include "tests/support/Machine.h"

#include "core/Launch.h"
#include "core/LocalizedStrings.h"
#include "core/Product.h"
#include "support/LogFiles.h"
#include "support/Output.h"
#include "tests/support/ComErrors.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/LogDocument.h"
#include "tests/support/Registry.h"
#include "ui/Logo.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iomanip>
#include <span>
#include <sstream>

namespace fs = std::filesystem;

namespace {

void DeleteValue(const wchar_t* subkey, const wchar_t* name) {
    RegDeleteKeyValueW(HKEY_CURRENT_USER, subkey, name);
}

/// Empty unless the tests are to run with one.
std::wstring OtherVersion() {
    std::array<wchar_t, 32> setting{};
    GetEnvironmentVariableW(L"VELLUMKIT_VERSION", setting.data(), static_cast<DWORD>(setting.size()));
    return setting.data();
}

std::wstring Lines(std::span<const std::wstring> entries) {
    std::wstring lines;
    for (const std::wstring& entry : entries)
        lines += entry + L'\n';
    return lines;
}

} // namespace

std::wstring SystemErrorText(HRESULT result) {
    std::wostringstream suffix;
    suffix << L" (0x" << std::hex << static_cast<DWORD>(result) << L")";
    const std::wstring message = SystemMessage(result);
    if (!message.empty())
        return message + suffix.str();
    std::wostringstream unknown;
    unknown << L"Unknown error 0x" << std::hex << std::uppercase << static_cast<DWORD>(result) << suffix.str();
    return unknown.str();
}

void Machine::SetUp() {
    ResetSettings();
    SetDword(OfficeLanguages, L"UILanguage", 1033);
}

void Machine::TearDown() {
    Logged();
    ExpectFindings();
    ResetSettings();
}

fs::path Machine::FrontEnd() {
    return ProgramFolder().parent_path() / OtherVersion() / "VellumkitInstaller.x64.exe";
}

std::wstring Machine::Version() {
    const std::wstring other = OtherVersion();
    return other.empty() ? ProductVersion : other;
}

fs::path Machine::LogFile() const {
    return fs::path(Temporary()) / "Vellumkit_Install.log";
}

fs::path Machine::CopyFrontEnd() const {
    fs::path copy = fs::path(Temporary()) / "copy.exe";
    fs::copy_file(FrontEnd(), copy);
    return copy;
}

fs::path Machine::CopyFrontEndThatCalls(const std::string& replacement, const std::string& imported) const {
    fs::path program = CopyFrontEnd();
    LetCall(program, replacement, imported);
    return program;
}

void Machine::LetCall(const fs::path& program, const std::string& replacement, const std::string& imported) {
    std::string bytes = ReadBytes(program);
    const std::string name = imported + '\0';
    const std::size_t position = bytes.find(name);
    EXPECT_NE(position, std::string::npos);
    EXPECT_LE(replacement.size(), imported.size());
    bytes.replace(position, name.size(), replacement + std::string(name.size() - replacement.size(), '\0'));
    std::ofstream(program, std::ios::binary) << bytes;
}

std::wstring Machine::Configuration(const std::wstring& exitCode, int milliseconds) const {
    std::wstring file = Temporary() + L"lab.ini";
    WritePrivateProfileStringW(L"ElevatedInstaller", L"ExitCode", exitCode.c_str(), file.c_str());
    WritePrivateProfileStringW(L"ElevatedInstaller", L"Milliseconds", std::to_wstring(milliseconds).c_str(),
                               file.c_str());
    return file;
}

DWORD Machine::Install(const std::wstring& configuration) const {
    return Start(L"/config \"" + configuration + L'"').ExitCode();
}

DWORD Machine::InstallIntercepting(const Interceptions& interceptions) const {
    return RunIntercepted(FrontEnd(), L"/config \"" + Configuration(L"0") + L'"', Temporary(), interceptions);
}

Entries Machine::Logged() const {
    Entries log = ReadEntries(LogFile());
    ExpectDocumented(log);
    const Findings findings = ReadLogFile(LogFile());
    EXPECT_EQ(findings.unknown, 0U) << testing::PrintToString(findings.notes);
    EXPECT_EQ(findings.disbelieved, 0U) << testing::PrintToString(findings.notes);
    return log;
}

Entries::const_iterator Machine::EndOfReport(const Entries& log) {
    return std::ranges::find(log, L"Begin processing");
}

void Machine::ExpectLog(const Entries& expected) const {
    const Entries log = Logged();
    EXPECT_EQ(Lines({EndOfReport(log), log.end()}), Lines(expected));
}

void Machine::ExpectReport(const std::wstring& machine, const std::wstring& arguments, bool whole) const {
    Entries expected = ReadLines(ProgramFolder() / "reports" / (machine + L".txt"));
    ASSERT_FALSE(expected.empty()) << "there is no report of such a machine";
    for (std::wstring& entry : expected) {
        if (entry.starts_with(L"Command line: "))
            entry = L"Command line: " + arguments;
        else if (entry == L"Version …")
            entry = L"Version " + Version();
        std::ranges::replace(entry, L'␀', L'\0'); // with which most values are stored
    }
    if (!whole)
        expected.pop_back();
    const Entries log = Logged();
    EXPECT_EQ(Lines({log.begin(), EndOfReport(log)}), Lines(expected));
}

std::wstring Machine::PayloadCommandLine() const {
    const Entries entries = ReadEntries(Temporary() + L"Vellumkit_Elev.log");
    constexpr std::wstring_view Prefix = L"Command line: ";
    return entries.empty() ? std::wstring() : entries[0].substr(Prefix.size());
}

Entries Machine::LogOfSearch() {
    return {L"Begin processing", L"Begin processing", L"Checking if OneNote is running",
            L"State: Installing - OneNote is not running, continuing with install"};
}

Entries Machine::LogOfExtraction(bool folderExists) const {
    const Entries created{L"Folder does not exist, creating...", L"Done."};
    const auto size = fs::file_size(ElevatedInstaller());
    return Joined(
        {{L"Folder path is: " + Temporary() + L"Vellumkit"},
         folderExists ? Entries{L"Folder already exists"} : created,
         {L"Extracting installer to " + Target(), L"    Installing file at resource id: 200 to path: " + Target(),
          L"    Loading from resource", L"    Size of the file is: " + std::to_wstring(size),
          L"    Writing to the given path", L"    Done.", L"Waiting for installer to finish"}});
}

Entries Machine::LogOfRepair(const std::wstring& reported, const Entries& then) {
    const std::wstring deleting = L"Deleting registry key: HKCU\\Software\\Microsoft\\Office\\";
    const std::wstring missing = L"Key not found";
    return Joined(
        {{deleting + L"14.0\\OneNote\\Resiliency\\DisabledItems\\@", missing,
          deleting + L"15.0\\OneNote\\Resiliency\\DisabledItems\\@", missing,
          deleting + L"16.0\\OneNote\\Resiliency\\DisabledItems\\@", missing,
          deleting + L"14.0\\OneNote\\Security\\DisableAllAddins", missing,
          deleting + L"15.0\\OneNote\\Security\\DisableAllAddins", missing,
          deleting + L"16.0\\OneNote\\Security\\DisableAllAddins", missing,
          deleting + L"OneNote\\AddIns\\Vellumkit.Addin\\LoadBehavior", missing, L"Internet Security Settings",
          std::wstring(L"    HKCU\\") + InternetSettings + L"\\SecureProtocols - " + reported, L""},
         then,
         {L"Internet Security Settings",
          std::wstring(L"    HKCU\\") + InternetPolicies + L"\\SecureProtocols - Not found", L"", L"State: Complete"}});
}

std::wstring Machine::LogOfFailure(const std::wstring& errorText) {
    return L"ERROR: Installation failed:\n\n" + errorText;
}

void WindowedMachine::SetUp() {
    Machine::SetUp();
    InstanceHandle = GetModuleHandleW(nullptr);
    LoadLocalizedStrings(L"en");
    LoadLogo();
}

void WindowedMachine::ExpectInstalled(const Program& frontEnd) {
    const InstallerScreen screen(frontEnd);
    screen.Await(ScreenStatus::Completed);
    screen.ClickCloseBox();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
}

void Machine::ExpectFindings() const {
    if (!fs::exists(LogFile()))
        return; // what it should have told, other expectations miss
    const Findings findings = ReadLogFile(LogFile());
    EXPECT_EQ(std::wstring(VerdictName(findings.verdict)), std::wstring(VerdictName(verdict_)));
    if (!step_.empty()) {
        EXPECT_EQ(StepName(findings), step_);
    }
    EXPECT_EQ(findings.code.has_value(), verdict_ == Verdict::Failed);
    if (findings.passes != 0) {
        EXPECT_EQ(findings.version, Version());
        EXPECT_TRUE(findings.attended);
    }
}

void Machine::ResetSettings() {
    for (const wchar_t* version : {L"14.0", L"15.0", L"16.0"})
        for (const wchar_t* key : {L"\\OneNote", L"\\Common\\LanguageResources"})
            RegDeleteTreeW(HKEY_CURRENT_USER, (std::wstring(L"Software\\Microsoft\\Office\\") + version + key).c_str());
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Office\\OneNote\\AddIns\\Vellumkit.Addin");
    DeleteValue(InternetSettings, L"SecureProtocols");
    DeleteValue(InternetPolicies, L"SecureProtocols");
}
