#pragma once

#include "support/Findings.h"
#include "tests/support/Interception.h"
#include "tests/support/LogText.h"
#include "tests/support/Program.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>
#include <string>

/// The machine on which a whole-program test runs the front-end: a temporary folder of the test's own, the current
/// user's settings without anything that the installer changes, Office in English, and what it looks like afterwards.
class Machine : public testing::Test {
protected:
    /// `suffix` becomes the end of the temporary folder's name.
    explicit Machine(const std::wstring& suffix = L"") : folder_(suffix) {}
    void SetUp() override;
    void TearDown() override;

    /// The front-end that the build made, or the one of another version: see `Version`.
    static std::filesystem::path FrontEnd();

    /// The front-end's version: the product's, unless VELLUMKIT_VERSION names another one, which was built in the
    /// folder of that name beside the front-end.
    static std::wstring Version();

    /// A copy of the front-end in the test's folder, for a test that changes it.
    std::filesystem::path CopyFrontEnd() const;

    /// A copy of the front-end that calls another function instead of one that it imports. The loader binds by name, so
    /// that one's name must not be longer and the same library must have it.
    std::filesystem::path CopyFrontEndThatCalls(const std::string& replacement, const std::string& imported) const;
    /// Changes such a copy to call yet another one.
    static void LetCall(const std::filesystem::path& program, const std::string& replacement,
                        const std::string& imported);

    /// Writes a configuration file that asks the stand-in for the elevated installer for this, and returns its path.
    std::wstring Configuration(const std::wstring& exitCode, int milliseconds = 0) const;

    /// Starts the front-end with that raw command line.
    Program Start(const std::wstring& arguments) const { return Program(FrontEnd(), arguments, Temporary()); }

    /// Performs an unattended pass and returns its exit code.
    DWORD Install(const std::wstring& configuration) const;
    DWORD Install() const { return Install(Configuration(L"0")); }
    /// The same, with calls intercepted.
    DWORD InstallIntercepting(const Interceptions& interceptions) const;

    /// The user's temporary folder, with its backslash.
    std::wstring Temporary() const { return folder_.Path().wstring() + L'\\'; }
    /// The front-end's log.
    std::filesystem::path LogFile() const;
    std::wstring Target() const { return Temporary() + L"Vellumkit\\Vellumkit Installer.exe"; }

    /// The entries of the front-end's log. A test failure when docs/log.md does not explain each of them, or the log
    /// reader doesn't know it, which every test looks at in the end.
    Entries Logged() const;
    /// What the log reader shall say of the test's last log when the front-end has not installed, and at which step it
    /// failed or was cut off, if that does not depend on the moment.
    void ExpectVerdict(Verdict verdict, const std::wstring& step = L"") {
        verdict_ = verdict;
        step_ = step;
    }
    /// Compares all of them that follow the report about the machine, in order; a failure shows the lines that differ.
    void ExpectLog(const Entries& expected) const;
    /// Compares the report about the machine with the one that is expected of a machine of lab/office/, for that raw
    /// command line. A front-end that ended abnormally has not written the last, empty entry.
    void ExpectReport(const std::wstring& machine, const std::wstring& arguments, bool whole = true) const;
    /// How the elevated installer was called: its whole command line.
    std::wstring PayloadCommandLine() const;

    /// The log of a pass up to the search for OneNote that found nothing.
    static Entries LogOfSearch();
    /// What follows up to the running payload.
    Entries LogOfExtraction(bool folderExists = false) const;
    /// What follows a successful payload for a user without Office, whose protocols are `reported`, `then` changed.
    static Entries LogOfRepair(const std::wstring& reported = L"Not found", const Entries& then = {L"Updated to 2688"});
    /// The last entry of a pass that failed with this error.
    static std::wstring LogOfFailure(const std::wstring& errorText);

private:
    static void ResetSettings();
    /// Where the log's report about the machine ends, and the first pass begins.
    static Entries::const_iterator EndOfReport(const Entries& log);

    TestFolder folder_;
    void ExpectFindings() const;

    Verdict verdict_ = Verdict::Installed;
    std::wstring step_;
};

/// One on which the test compares the front-end's window with what it paints itself, in English.
class WindowedMachine : public Machine {
protected:
    void SetUp() override;

    /// Waits until the front-end has installed, closes its window, and waits for its end.
    static void ExpectInstalled(const Program& frontEnd);
};

/// Windows' own message for an HRESULT and its suffix, as the log shows an error: "Access denied. (0x80070005)".
std::wstring SystemErrorText(HRESULT result);

inline constexpr wchar_t InternetSettings[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
inline constexpr wchar_t OfficeLanguages[] = L"Software\\Microsoft\\Office\\16.0\\Common\\LanguageResources";
inline constexpr wchar_t InternetPolicies[] =
    L"Software\\Policies\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
