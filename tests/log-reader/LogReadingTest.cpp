#include "support/LogReading.h"

#include "app/CommandLine.h"
#include "core/Launch.h"
#include "tests/log-reader/ReadLogs.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace {

std::chrono::seconds Took(const Findings& findings, RunStep step) {
    return findings.took.at(static_cast<std::size_t>(step));
}

Entries Terminated() {
    return {L"OneNote is still running after 5 seconds. Attempting to close windows",
            L"ERROR: Cannot close OneNote Windows: Server execution failed (0x80080005)",
            L"OneNote is still running after 5 seconds. Attempting to terminate process"};
}

} // namespace

TEST(LogReading, TellsAnInstallation) {
    const Findings findings = Read(Unattended()
                                       .After(1)
                                       .Write(SampleSearch())
                                       .Write(SampleExtraction())
                                       .After(100)
                                       .Write(SampleRepairs())
                                       .Write(SampleProtocols()));
    EXPECT_EQ(VerdictOf(findings), L"installed");
    EXPECT_EQ(findings.version, L"4.5.1");
    EXPECT_EQ(findings.commandLine, L"/config x");
    EXPECT_EQ(findings.attended, false);
    EXPECT_EQ(findings.language, L"");
    EXPECT_EQ(findings.passes, 1);
    EXPECT_FALSE(findings.asked);
    using namespace std::chrono;
    EXPECT_EQ(findings.begun, local_days(2026y / November / 21) + 21h + 14min + 32s);
    EXPECT_EQ(Took(findings, RunStep::ElevatedInstaller), 100s);
    EXPECT_EQ(findings.oneNote.bitness, Registration::Bitness::NotRegistered);
    EXPECT_EQ(findings.office.bitness, Registration::Bitness::NotRegistered);
    EXPECT_TRUE(findings.terminated.empty());
    EXPECT_EQ(findings.repaired, (std::vector<std::wstring>{
                                     LR"(HKCU\Software\Microsoft\Office\15.0\OneNote\Resiliency\DisabledItems\@)",
                                     LR"(HKCU\Software\Microsoft\Office\OneNote\AddIns\Vellumkit.Addin\LoadBehavior)",
                                     L"SecureProtocols = 2688"}));
    EXPECT_EQ(findings.notes,
              (std::vector<std::wstring>{
                  LR"(HKCU\Software\Microsoft\Office\16.0\OneNote\Resiliency\DisabledItems\@ could not be deleted.)"}));
    EXPECT_EQ(findings.unknown, 0U);
    EXPECT_EQ(findings.disbelieved, 0U);
}

TEST(LogReading, TellsAFailureAndWhatItMeans) {
    const Findings findings = Read(Unattended()
                                       .Write(SampleSearch())
                                       .Write(SampleExtraction())
                                       .Write({L"ERROR: Installer reported failure: 4294967197",
                                               L"ERROR: Installation fehlgeschlagen:\n\nKein Platz. (0xffffff9d)"}));
    EXPECT_EQ(VerdictOf(findings), L"failed");
    EXPECT_EQ(findings.code, 0xffffff9d);
    EXPECT_EQ(findings.message, L"Kein Platz. (0xffffff9d)");
    EXPECT_EQ(findings.language, L"de");
    EXPECT_EQ(StepOf(findings), L"elevated-installer");
    EXPECT_STREQ(findings.cause, L"The elevated installer. The number is its exit code.");
}

TEST(LogReading, TellsWhereItFailed) {
    const Entries search{L"Begin processing", L"Begin processing", L"Checking if OneNote is running"};
    const Entries waited{L"Found process 'onenote.exe'", L"OneNote is still running. Waiting...",
                         L"OneNote is still running after 5 seconds. Attempting to close windows",
                         L"OneNote is still running after 50 seconds. Attempting to terminate process"};
    const Entries found = Joined({SampleSearch(), SampleExtraction()});
    const auto upTo = [&found](const wchar_t* last) {
        return Entries(found.begin(), std::ranges::find(found, last) + 1);
    };
    const Entries repairs = Joined({found, SampleRepairs()});
    const Entries settings = SampleProtocols();
    const Entries reported = Joined({repairs, {settings.begin(), settings.begin() + 3}});
    const std::wstring creating = L"Creating registry key: HKCU\\x";
    const struct {
        Entries behind;
        const wchar_t* step;
        const wchar_t* cause;
    } cases[] = {
        {search, L"search", nullptr},
        {Joined({search, {L"ERROR: Failed to get list of processes: 8"}}), L"search", L"The search: "},
        {Joined({search, waited, {L"OneNote is still running after 50 seconds."}}), L"search", L"OneNote or "},
        {upTo(L"Folder does not exist, creating..."), L"payload", L"The folder: "},
        {upTo(L"Done."), L"payload", nullptr},
        {upTo(L"    Loading from resource"), L"payload", L"This program was damaged"},
        {upTo(L"    Size of the file is: 123456"), L"payload", L"This program was damaged"},
        {upTo(L"    Writing to the given path"), L"payload", L"Opening the file"},
        {upTo(L"    Done."), L"elevation", L"Windows did not start"},
        {found, L"elevated-installer", nullptr},
        {Joined({found, {L"ERROR: Failed to get the process exit code: 6"}}), L"elevated-installer", L"Nobody knows"},
        {Joined({found, {L"ERROR: Installer reported failure: 5"}}), L"elevated-installer",
         L"The elevated installer. "},
        {repairs, L"repairs", nullptr},
        {reported, L"protocols", L"The security settings "},
        {Joined({reported, {creating}}), L"protocols", L"The security settings "},
        {Joined({reported, {creating + L" = 2688 (DWORD)"}}), L"protocols", L"The security settings "},
        {Joined({reported, {L"Updated to 2688"}}), L"protocols", nullptr},
    };
    for (const auto& item : cases) {
        const Findings findings =
            Read(Unattended().Write(item.behind).Write({L"ERROR: Installation failed:\n\nx (0x80070005)"}));
        EXPECT_EQ(VerdictOf(findings), L"failed");
        EXPECT_EQ(findings.code, 0x80070005);
        EXPECT_EQ(StepOf(findings), item.step) << testing::PrintToString(item.behind.back());
        ASSERT_EQ(findings.cause != nullptr, item.cause != nullptr) << testing::PrintToString(item.behind.back());
        if (item.cause != nullptr) {
            EXPECT_TRUE(std::wstring_view(findings.cause).starts_with(item.cause));
        }
        EXPECT_EQ(findings.disbelieved + findings.unknown, 0U) << testing::PrintToString(item.behind.back());
    }
}

TEST(LogReading, GivesNoCauseBehindAnEntryThatItDoesNotKnow) {
    const Findings findings = Read(Unattended()
                                       .Write(SampleSearch())
                                       .Write(SampleExtraction())
                                       .Write({L"ERROR: Installer reported failure: 5", L"Making coffee",
                                               L"ERROR: Installation failed:\n\nx (0x5)"}));
    EXPECT_EQ(VerdictOf(findings), L"failed");
    EXPECT_EQ(findings.cause, nullptr);
}

TEST(LogReading, KnowsAFailureInALanguageThatItDoesNotKnow) {
    for (const wchar_t* text : {L"\xFFFD"
                                L"chec :",
                                L"Instalarea a eșuat:"}) {
        const std::wstring failure = std::wstring(L"ERROR: ") + text + L"\n\nx (0x5)";
        const Findings findings = Read(Unattended().Write(SampleSearch()).Write(SampleExtraction()).Write({failure}));
        EXPECT_EQ(VerdictOf(findings), L"failed");
        EXPECT_EQ(findings.code, 5U);
        EXPECT_EQ(findings.language, L"");
        EXPECT_EQ(findings.unknown, 1U);
    }
}

TEST(LogReading, TellsTheStepWhereverTheInstallerIsCutOff) {
    const Entries pass = Joined({SampleSearch(), SampleExtraction(), SampleRepairs(), SampleProtocols()});
    const std::map<std::wstring, std::wstring> stepsBehind{
        {L"Begin processing", L"search"},
        {L"State: Installing - OneNote is not running, continuing with install", L"payload"},
        {L"    Size of the file is: 123456", L"payload"},
        {L"    Writing to the given path", L"elevation"},
        {L"    Done.", L"elevated-installer"},
        {L"Waiting for installer to finish", L"repairs"},
        {L"Internet Security Settings", L"protocols"},
    };
    std::set<std::wstring> seen;
    for (std::size_t count = 1; count < pass.size(); ++count) {
        const Entries begun(pass.begin(), pass.begin() + static_cast<std::ptrdiff_t>(count));
        const SampleLog log = Unattended().Write(begun);
        const Findings findings = ReadLogBytes(Utf16Bytes(log.Text() + L"\r\n")); // the next one is not on disk
        EXPECT_EQ(VerdictOf(findings), L"unfinished");
        if (const auto step = stepsBehind.find(begun.back()); step != stepsBehind.end()) {
            EXPECT_EQ(StepOf(findings), step->second) << testing::PrintToString(begun.back());
            seen.insert(begun.back());
        }
    }
    EXPECT_EQ(seen.size(), stepsBehind.size());
}

TEST(LogReading, TellsAQuestionThatWasTheEnd) {
    const SampleLog asked = SampleLog().WriteReport(L"", L"office-2010");
    const Findings findings = Read(asked);
    EXPECT_EQ(VerdictOf(findings), L"asked");
    EXPECT_TRUE(findings.asked);
    EXPECT_EQ(findings.attended, true);
    EXPECT_EQ(findings.oneNote.bitness, Registration::Bitness::Is32Bit);
    EXPECT_EQ(StepOf(findings), L"question");
    EXPECT_EQ(VerdictOf(ReadLogBytes(Utf16Bytes(asked.Text() + L"\r\n"))), L"asked");

    const Findings goneOn = Read(SampleLog(asked).After(7).WriteInstallation());
    EXPECT_EQ(VerdictOf(goneOn), L"installed");
    EXPECT_TRUE(goneOn.asked);
    EXPECT_EQ(Took(goneOn, RunStep::Question), std::chrono::seconds(7));
    EXPECT_TRUE(HasNote(goneOn, L"A 64-bit add-in does not work in a 32-bit OneNote."));

    const Findings unattended = Read(SampleLog().WriteReport(L"/config x", L"office-2010"));
    EXPECT_EQ(VerdictOf(unattended), L"unfinished");
    EXPECT_FALSE(unattended.asked);
    EXPECT_EQ(StepOf(unattended), L"search");

    EXPECT_EQ(StepOf(Read(SampleLog().WriteReport(L""))), L"window");
}

TEST(LogReading, ReadsTheCommandLineAsTheInstallerDoes) {
    const struct {
        const wchar_t* commandLine;
        bool attended;
    } cases[] = {
        {L"", true},          {L"/config", true},   {L"/config x", false},   {L"/delay /config \"a b\"", false},
        {L"/Config x", true}, {L"x /config", true}, {L"/config \"\"", true}, {L"/config x /config \"\" y", true},
    };
    for (const auto& item : cases) {
        EXPECT_EQ(Read(SampleLog().WriteReport(item.commandLine)).attended, item.attended)
            << testing::PrintToString(std::wstring(item.commandLine));
        ConfigPath.clear();
        ReadCommandLine(item.commandLine);
        EXPECT_EQ(ConfigPath.empty(), item.attended) << testing::PrintToString(std::wstring(item.commandLine));
    }
    ConfigPath.clear();
    DelayOption = false;
}

TEST(LogReading, TellsThePassThatCounts) {
    SampleLog log = SampleLog().WriteReport(L"");
    log.Write(SampleSearch()).Write({L"ERROR: Installation failed:\n\nx (0x5)", L"Waiting for a signal"});
    EXPECT_EQ(VerdictOf(Read(log)), L"failed");
    log.After(60).Write(StubbornSearch()).After(5).Write(Terminated()).After(5);
    const Findings searching = Read(log);
    EXPECT_EQ(VerdictOf(searching), L"unfinished");
    EXPECT_EQ(StepOf(searching), L"search");
    EXPECT_EQ(searching.passes, 2);
    log.Write({L"State: Installing - OneNote is not running, continuing with install"});
    log.Write(SampleExtraction()).Write(SampleRepairs()).Write(SampleProtocols());
    log.Write({L"Waiting for a signal", L"Starting OneNote",
               L"ERROR: Failed to start OneNote: Class not registered (0x80040154)",
               L"Exit signalled, returning from background process"});
    const Findings findings = Read(log);
    EXPECT_EQ(VerdictOf(findings), L"installed");
    EXPECT_EQ(findings.terminated, std::vector<std::wstring>{L"onenote.exe"});
    EXPECT_EQ(Took(findings, RunStep::Search), std::chrono::seconds(10));
    EXPECT_EQ(Took(findings, RunStep::User), std::chrono::seconds(60));
    EXPECT_TRUE(HasNote(findings, L"could not be asked to close: Server execution failed (0x80080005) OneNote runs"));
    EXPECT_TRUE(HasNote(findings, L"could not be started from the window: Class not registered (0x80040154) OneNote"));
    EXPECT_EQ(findings.unknown + findings.disbelieved, 0U);
}

TEST(LogReading, TellsDatebookeryThatWasTerminated) {
    SampleLog log = Unattended().Write({L"Begin processing"}).Write(StubbornSearch(L"datebk.exe")).Write(Terminated());
    EXPECT_TRUE(Read(log).terminated.empty()) << "it may still run";
    log.Write({L"State: Installing - OneNote is not running, continuing with install"});
    EXPECT_EQ(Read(log).terminated, std::vector<std::wstring>{L"datebk.exe"});
}

TEST(LogReading, TellsNothingTerminatedThatStillRan) {
    SampleLog log = Unattended().Write({L"Begin processing"}).Write(StubbornSearch()).Write(Terminated());
    log.Write({L"OneNote is still running after 5 seconds.", L"ERROR: Installation failed:\n\nx (0x80070020)"});
    EXPECT_TRUE(Read(log).terminated.empty());
}

TEST(LogReading, TellsWhatIsRegistered) {
    const Findings findings = Read(SampleLog().WriteReport(L"", L"office-64-bit"));
    EXPECT_EQ(findings.oneNote.bitness, Registration::Bitness::Is64Bit);
    EXPECT_FALSE(findings.oneNote.path.empty());
    EXPECT_EQ(findings.oneNote.path, LR"(C:\Program Files\Microsoft Office\Office16\ONENOTE.EXE)");
    EXPECT_EQ(findings.office.bitness, Registration::Bitness::Is64Bit);
    EXPECT_EQ(findings.office.path, LR"(C:\Program Files\Common Files\Microsoft Shared\OFFICE16\MSO.DLL)");
    EXPECT_TRUE(findings.oneNote.fileIsMissing);
    EXPECT_TRUE(HasNote(findings, L"OneNote's type library names a file that does not exist"));

    const Findings existing = Read(SampleLog().WriteReport(L"", L"existing-files"));
    EXPECT_FALSE(existing.office.fileIsMissing);

    const Findings wow64 = Read(SampleLog().WriteReport(L"", L"click-to-run-32-bit"));
    EXPECT_EQ(wow64.oneNote.bitness, Registration::Bitness::Is32Bit);
    EXPECT_FALSE(wow64.oneNote.path.empty()) << "which only the 32-bit view has";
}

TEST(LogReading, TellsAWindowsThatIsDamaged) {
    const std::wstring text = Unattended().Text();
    const std::wstring proxy = LR"(    HKCR\CLSID\{00020424-0000-0000-C000-000000000046}\InprocServer32\@ - )";
    const std::size_t place = text.find(proxy) + proxy.size();
    std::wstring damaged = text;
    damaged.replace(place, damaged.find(L"\r\n", place) - place, L"Not found");
    EXPECT_FALSE(HasNote(ReadLogBytes(Utf16Bytes(text)), L"Windows is damaged"));
    EXPECT_TRUE(HasNote(ReadLogBytes(Utf16Bytes(damaged)), L"Windows is damaged"));
}

TEST(LogReading, ReadsALogThatAnEditorHasSavedAnew) {
    std::wstring text = SampleLog().WriteReport(L"", L"office-64-bit").WriteInstallation().Text();
    for (const wchar_t* blanks : {L" \r\n", L"\r\n"}) { // without the blanks at the ends of lines
        for (std::size_t place = text.find(blanks); place != std::wstring::npos; place = text.find(blanks))
            text.replace(place, std::wcslen(blanks), blanks[0] == L' ' ? L"\r\n" : L"\n");
    }
    std::ranges::replace(text, L'\0', L' ');
    const auto length = static_cast<int>(text.size());
    std::string bytes(3 * text.size(), '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(),
                                                              static_cast<int>(bytes.size()), nullptr, nullptr)));
    const Findings findings = ReadLogBytes(bytes);
    EXPECT_EQ(VerdictOf(findings), L"installed");
    EXPECT_EQ(findings.oneNote.bitness, Registration::Bitness::Is64Bit);
    EXPECT_EQ(findings.attended, true);
    EXPECT_EQ(findings.unknown + findings.disbelieved, 0U) << testing::PrintToString(findings.notes);
}

TEST(LogReading, TellsAReportThatIsCutOffInItsLastBlock) {
    const std::wstring text = SampleLog().WriteReport(L"", L"click-to-run-32-bit").Text();
    const std::size_t block = text.find(L"Type library for IRibbonExtensibility version 2.8");
    std::vector<std::wstring> steps;
    for (std::size_t end = text.find(L"\r\n", block); end != std::wstring::npos; end = text.find(L"\r\n", end + 1))
        steps.push_back(StepOf(ReadLogBytes(Utf16Bytes(text.substr(0, end + 2)))));
    EXPECT_EQ(std::ranges::count(steps, L"question"), 1) << "behind the result";
    EXPECT_EQ(steps.back(), L"question");
    EXPECT_EQ(steps.front(), L"report");
}

TEST(LogReading, MayBeCutAnywhere) {
    const SampleLog log = Unattended().WriteInstallation();
    const std::string bytes = Utf16Bytes(log.Text());
    const std::size_t pass = bytes.size() - Utf16Bytes(SampleLog().WriteInstallation().Text()).size();
    // Odd steps, so that characters are halved too.
    for (std::size_t length = 0; length < bytes.size(); length += length < 300 ? 1 : length < pass ? 67 : 7) {
        const Findings findings = ReadLogBytes(std::string_view(bytes).substr(0, length));
        ASSERT_EQ(VerdictOf(findings), L"unfinished") << length;
        ASSERT_EQ(findings.unknown + findings.disbelieved, 0U) << length;
    }
    EXPECT_EQ(VerdictOf(ReadLogBytes(bytes)), L"installed");
}

TEST(LogReading, KnowsALogWhoseBeginningIsMissing) {
    const std::wstring text = Unattended().WriteInstallation().Text();
    const Findings findings = ReadLogBytes(Utf16Bytes(text.substr(text.find(L"IID for _IDT") - Line.size())));
    EXPECT_EQ(VerdictOf(findings), L"installed");
    EXPECT_TRUE(HasNote(findings, L"The beginning of the log is missing."));
    EXPECT_EQ(findings.version, L"");
}

TEST(LogReading, RefusesTheLogsOfOthers) {
    const std::wstring elevated =
        L"\xFEFF" + Line + L"Command line: x" + Line + L"Error mode: 0" + Line + L"Exit code: 0";
    for (const std::wstring& text : {elevated, std::wstring(L"Hello\n"), std::wstring(L"{\"a\": 1}"), Line + L"Done."})
        EXPECT_EQ(VerdictOf(ReadLogBytes(Utf16Bytes(text))), L"foreign") << testing::PrintToString(text);
    EXPECT_EQ(VerdictOf(ReadLogBytes(std::string_view("MZ\x90\0\3\0\0\0", 8))), L"foreign");
}

TEST(LogReading, TellsTheLastOfSeveralRuns) {
    const std::wstring failed =
        Unattended().Write(SampleSearch()).Write({L"ERROR: Installation failed:\n\nx (0x5)"}).Text();
    const std::wstring installed = Unattended().WriteInstallation().Text();
    const Findings good = ReadLogBytes(Utf16Bytes(failed + installed));
    EXPECT_EQ(VerdictOf(good), L"installed");
    EXPECT_EQ(good.passes, 1);
    EXPECT_TRUE(HasNote(good, L"There are 2 runs in this file; this is the last one."));
    EXPECT_EQ(VerdictOf(ReadLogBytes(Utf16Bytes(installed + failed))), L"failed");
}

TEST(LogReading, UnderstandsTwoThreadsThatWriteAtTheSameTime) {
    const std::wstring time = Line.substr(2, TimeLength - 3);
    const std::wstring log = SampleLog().WriteReport(L"").WriteInstallation().Text();
    const std::wstring ends[] = {
        Line + L"Waiting for a signal" + Line + L"Starting OneNote",
        Line + L"Starting OneNote" + Line + L"Waiting for a signal",
        L"\r\n\r\n" + time + time + L" -  - Waiting for a signalStarting OneNote",
        L"\r\n" + time + L"\r\n" + time + L" - Starting OneNote - Waiting for a signal",
        Line + L"\r\n" + time + L" - Starting OneNoteWaiting for a signal",
    };
    for (const std::wstring& end : ends) {
        std::wstring text = log + end;
        for (const wchar_t* entry : {L"Started OneNote", L"Exit signalled, returning from background process"})
            text.append(Line).append(entry);
        const Findings findings = ReadLogBytes(Utf16Bytes(text));
        EXPECT_EQ(VerdictOf(findings), L"installed") << testing::PrintToString(end);
        EXPECT_TRUE(HasNote(findings, L"The user started OneNote")) << testing::PrintToString(end);
        EXPECT_EQ(findings.unknown + findings.disbelieved, 0U) << testing::PrintToString(end);
        EXPECT_EQ(HasNote(findings, L"Two threads"), &end > &ends[1]) << testing::PrintToString(end);
    }
}

TEST(LogReading, TellsAnEntryThatItDoesNotKnow) {
    const Findings findings =
        Read(Unattended().Write(SampleSearch()).Write({L"Making coffee"}).Write(SampleExtraction()));
    EXPECT_EQ(findings.unknown, 1U);
    EXPECT_TRUE(HasNote(findings, L"Making coffee"));
    EXPECT_EQ(StepOf(findings), L"elevated-installer");
    EXPECT_EQ(findings.disbelieved, 0U);
}

TEST(LogReading, NotesAClockThatIsSetBack) {
    EXPECT_TRUE(HasNote(Read(Unattended().After(-3600).WriteInstallation()), L"The clock was set back"));
    EXPECT_FALSE(HasNote(Read(Unattended().WriteInstallation()), L"The clock"));
}
