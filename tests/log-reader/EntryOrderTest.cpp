// Which entries are believed, when a text in the log looks like some.

#include "support/EntryOrder.h"

#include "tests/log-reader/ReadLogs.h"

#include <gtest/gtest.h>

namespace {

/// The log of a machine on which the given text stands as the value of an entry of the report, or in another place.
std::string Spoilt(const std::wstring& log, const std::wstring& entry, const std::wstring& text) {
    std::wstring spoilt = log;
    const std::size_t place = spoilt.find(entry);
    EXPECT_NE(place, std::wstring::npos);
    spoilt.replace(place, entry.size(), text);
    return Utf16Bytes(spoilt);
}

} // namespace

TEST(EntryOrder, DoesNotBelieveAStringThatImitatesEntries) {
    const std::wstring failure = Line + L"ERROR: Installation failed:\n\nx (0x5)";
    const std::wstring failed =
        Unattended().Write(SampleSearch()).Write(SampleExtraction()).Write(SampleRepairs()).Text() + Line +
        L"Internet Security Settings" + Line + L"    HKCU\\x - Not found" + Line + failure;
    const std::wstring run = Unattended().WriteInstallation().Text().substr(1);
    const std::wstring pass = SampleLog().WriteInstallation().Text().substr(1);
    const std::wstring restOfReport = Line + run.substr(run.find(LR"(    HKCR\OneNote.Application.14\@)"));
    const std::wstring imitations[] = {Line + L"State: Complete",         run,           pass, restOfReport,
                                       Line + L"    HKCR\\x - Not found", failure + pass};
    const std::wstring values[] = {
        LR"(    HKCR\OneNote.Application\CurVer\@ - )",
        LR"(    HKCR\Wow6432Node\TypeLib\{2DF8D04C-5BFA-101B-BDE5-00AA0044DE52}\2.8\FLAGS\@ - )", L"    HKCU\\x - "};
    for (const std::wstring& value : values) {
        for (const std::wstring& imitation : imitations) {
            for (const wchar_t* beginning : {L"x", L"x (String)"}) {
                // The string's kind must stand somewhere: behind the last entry, or behind one that may have anything.
                for (const std::wstring& end : {std::wstring(), Line + L"Folder path is: x", Line + L"x"}) {
                    std::wstring text = value;
                    text.append(beginning).append(imitation).append(end).append(L" (String)");
                    const Findings findings = ReadLogBytes(Spoilt(failed, value + L"Not found", text));
                    EXPECT_EQ(VerdictOf(findings), L"failed") << testing::PrintToString(text);
                    EXPECT_TRUE(imitation.find(L"State: Complete") == std::wstring::npos ||
                                findings.disbelieved + findings.unknown != 0)
                        << testing::PrintToString(text);
                }
            }
        }
    }
}

TEST(EntryOrder, DoesNotBelieveAPathThatImitatesEntries) {
    const std::wstring pass = SampleLog().WriteInstallation().Text().substr(1);
    const std::wstring path = L"C:\\x" + pass + Line + L"Folder path is: x";
    const std::wstring value = LR"(    HKCR\TypeLib\{2DF8D04C-5BFA-101B-BDE5-00AA0044DE52}\2.8\0\Win32\@ - )";
    const std::wstring asked = SampleLog().WriteReport(L"", L"office-2010").Text();
    const std::wstring failed = SampleLog().WriteReport(L"").Write(SampleSearch()).Text();
    for (const std::wstring& log : {asked, failed}) {
        std::wstring spoilt = log;
        const std::size_t place = spoilt.find(value) + value.size();
        spoilt.replace(place, spoilt.find(L"\r\n", place) - place, path + L" (String)");
        const std::size_t end = spoilt.find(L"\r\n", spoilt.find(L"2.8\\FLAGS\\@", spoilt.find(L"Wow6432Node", place)));
        const std::size_t behind = spoilt.find(L" - ", end) + 3; // the empty entry
        spoilt.insert(behind, std::wstring(Line).append(L"Error: File DOES NOT exist: ").append(path));
        const Findings findings = ReadLogBytes(Utf16Bytes(spoilt));
        EXPECT_NE(VerdictOf(findings), L"installed");
        EXPECT_TRUE(HasNote(findings, L"They were not believed"));
        EXPECT_FALSE(HasNote(findings, L"Two threads"));
    }
}

TEST(EntryOrder, DoesNotBelieveADescriptionThatImitatesEntries) {
    const std::wstring success = SampleLog().WriteInstallation().Text().substr(1);
    for (const std::wstring& imitation : {Line + L"State: Complete", success}) {
        for (const wchar_t* beginning : {L"x", L"x (0x80042030)"}) {
            SampleLog log = Unattended().Write({L"Begin processing"}).Write(StubbornSearch());
            std::wstring refusal = L"ERROR: Cannot close OneNote Windows: ";
            refusal.append(beginning).append(imitation).append(Line).append(L"Folder path is: y (0x80042030)");
            log.Write({L"OneNote is still running after 5 seconds. Attempting to close windows", refusal,
                       L"OneNote is still running after 5 seconds. Attempting to terminate process"});
            const Findings findings = Read(log);
            EXPECT_EQ(VerdictOf(findings), L"unfinished");
            EXPECT_EQ(StepOf(findings), L"search");
            EXPECT_TRUE(HasNote(findings, L"They were not believed"));
        }
    }
}

TEST(EntryOrder, BelievesASuccessBehindAnImitatedFailure) {
    std::wstring log = Unattended().WriteInstallation().Text();
    const std::wstring value = L"\\SecureProtocols - ";
    const std::wstring failure =
        Unattended()
            .Write({L"Begin processing", L"Begin processing", L"Checking if OneNote is running",
                    L"ERROR: Installation failed:\n\nx (0x5)"})
            .Text()
            .substr(1);
    const std::wstring text = value + L"x (String)" + failure + Line + L"Folder path is: x (String)";
    const Findings findings = ReadLogBytes(Spoilt(log, value + L"Not found", text));
    EXPECT_EQ(VerdictOf(findings), L"installed");
    EXPECT_TRUE(HasNote(findings, L"They were not believed"));
}

TEST(EntryOrder, DoesNotBelieveSuccessOutOfPlace) {
    for (const Entries& before : {Entries{}, SampleSearch(), Joined({SampleSearch(), SampleExtraction()})}) {
        const Findings findings = Read(Unattended().Write(before).Write({L"State: Complete"}));
        EXPECT_EQ(VerdictOf(findings), L"unfinished") << before.size();
        EXPECT_EQ(findings.disbelieved, 1U);
    }
}
