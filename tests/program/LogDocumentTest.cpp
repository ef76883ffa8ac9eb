// Whether the real executable writes what docs/log.md explains. That it writes nothing else is looked at in all tests
// of it: see Machine::Logged.

#include "tests/support/LogDocument.h"

#include "tests/support/InstallerScreen.h"
#include "tests/support/LabOffice.h"
#include "tests/support/LabOneNote.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"
#include "tests/support/User.h"

#include <set>

namespace {

class LogDocument : public WindowedMachine {
protected:
    /// Lets the front-end install, unattended, and keeps what it logs. Without `file` it is the one that the build
    /// made.
    void Run(const std::wstring& configuration = L"x", const std::filesystem::path& file = FrontEnd()) {
        const Program frontEnd(file, L"/config \"" + configuration + L'"', Temporary());
        Keep(frontEnd);
    }

    /// Waits for the front-end's end, and keeps what it logged.
    void Keep(const Program& frontEnd) {
        frontEnd.ExitCode();
        written_.merge(ExpectDocumented(Logged()));
    }

    /// Every entry that is quoted in the section was in one of the logs.
    void ExpectQuotesWritten(const std::wstring& section) const {
        int quotes = 0;
        for (const QuotedEntry& quote : QuotedEntries()) {
            if (quote.section != section)
                continue;
            ++quotes;
            EXPECT_TRUE(written_.contains(&quote)) << "not written: " << testing::PrintToString(quote.text);
        }
        EXPECT_GT(quotes, 0);
    }

    /// A front-end for which a call fails: of kernel32.dll FlushFileBuffers does, of whatever is no file.
    std::filesystem::path FrontEndWithoutSuccessIn(const std::string& function,
                                                   const std::string& replacement = "FlushFileBuffers") const {
        std::filesystem::path copy = CopyFrontEndThatCalls(replacement, function);
        std::filesystem::path kept = copy.parent_path() / (function + ".exe");
        std::filesystem::rename(copy, kept);
        return kept;
    }

private:
    std::set<const QuotedEntry*> written_;
};

} // namespace

TEST_F(LogDocument, HasQuotesInTheSectionsThatAreTestedHere) {
    std::vector<std::wstring> sections;
    for (const QuotedEntry& quote : QuotedEntries()) {
        if (sections.empty() || sections.back() != quote.section)
            sections.push_back(quote.section);
    }
    EXPECT_EQ(sections,
              (std::vector<std::wstring>{L"The head", L"The report about the machine", L"The search for OneNote",
                                         L"The elevated installer", L"The repairs", L"The end"}));
}

TEST_F(LogDocument, ExplainsTheReport) {
    for (const wchar_t* machine : {L"office-2010", L"expandable-paths", L"wrong-types", L"existing-files"}) {
        const LabOffice office(machine);
        Run();
    }
    ExpectQuotesWritten(L"The head");
    ExpectQuotesWritten(L"The report about the machine");
}

TEST_F(LogDocument, ExplainsTheSearchWithRealWaits) {
    Run(L"x", FrontEndWithoutSuccessIn("K32EnumProcesses"));
    const TargetProgram datebookery;
    Run(L"x", FrontEndWithoutSuccessIn("TerminateProcess"));
    EXPECT_TRUE(datebookery.IsRunning());
    datebookery.TellToEnd();
    EXPECT_EQ(datebookery.ExitCode(), 0U);
    Run();
    ExpectQuotesWritten(L"The search for OneNote");
}

TEST_F(LogDocument, ExplainsTheExtraction) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    Run(Configuration(L"5"));
    Run(L"x", FrontEndWithoutSuccessIn("GetExitCodeProcess"));
    ExpectQuotesWritten(L"The elevated installer");
}

TEST_F(LogDocument, ExplainsTheRepairs) {
    // RegUnLoadKeyW takes a key and a subkey, as these functions do first, and refuses.
    SetDword(L"Software\\Microsoft\\Office\\16.0\\OneNote\\Resiliency\\DisabledItems", L"Item", 1);
    SetDword(L"Software\\Microsoft\\Office\\16.0\\OneNote\\Security", L"Another", 1);
    Run(L"x", FrontEndWithoutSuccessIn("RegDeleteTreeW", "RegUnLoadKeyW"));
    for (const int type : {REG_DWORD, REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ}) {
        for (const wchar_t* key : {InternetSettings, InternetPolicies})
            SetValue(key, L"SecureProtocols", static_cast<DWORD>(type), {'1', 0, 0, 0});
        Run();
    }
    const KeptKey settings(HKEY_CURRENT_USER, InternetSettings);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, InternetSettings), ERROR_SUCCESS);
    Run(L"x", FrontEndWithoutSuccessIn("RegCreateKeyExW", "RegUnLoadKeyW"));
    Run();
    ExpectQuotesWritten(L"The repairs");
}

TEST_F(LogDocument, ExplainsTheEnd) {
    LabOneNote oneNote(Temporary());
    for (const bool registered : {false, true}) {
        if (registered)
            oneNote.Register();
        Configuration(L"5");
        const Program program = Start(L"");
        const InstallerScreen screen(program);
        screen.AwaitFailure(SystemErrorText(5));
        Configuration(L"0");
        screen.Activate();
        User::Click(screen.Primary());
        screen.Await(ScreenStatus::Completed);
        User::Click(screen.Secondary());
        Keep(program);
    }
    ExpectQuotesWritten(L"The end");
}
