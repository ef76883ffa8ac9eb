#include "core/Log.h"

#include "core/TempPath.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogText.h"
#include "tests/support/Program.h"
#include "tests/support/TestFolder.h"

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <iomanip>
#include <iterator>

namespace fs = std::filesystem;

namespace {

class LogFile : public testing::Test {
protected:
    /// Runs the log writer under the name `program` with the folder of the test as temporary folder.
    DWORD Write(const std::wstring& commands, const std::wstring& program = L"log-writer.exe") const {
        const fs::path file = folder_.Path() / program;
        fs::copy_file(ProgramFolder() / "log-writer.exe", file, fs::copy_options::overwrite_existing);
        return Program(file, commands, folder_.Path(), folder_.Path()).ExitCode();
    }

    fs::path Path(const wchar_t* name = L"Vellumkit_Install.log") const { return folder_.Path() / name; }

    TestFolder folder_{L" ж"};
};

/// Asked for by a process of its own: this one has kept the answer.
class TemporaryFolder : public LogFile {};

/// The programs of the product in the order in which they are looked for, and their logs.
constexpr std::pair<const wchar_t*, const wchar_t*> ProgramLogs[] = {
    {L"dllhost.exe", L"Vellumkit_Addin_outproc.log"},          {L"onenote.exe", L"Vellumkit_Addin_inproc.log"},
    {L"Vellumkit Installer.exe", L"Vellumkit_Elev.log"},       {L"VlkUninst.exe", L"Vellumkit_Uninst.log"},
    {L"VellumkitInstaller.x64.exe", L"Vellumkit_Install.log"},
};

/// What the test's own log has on disk.
std::wstring OnDisk() {
    return Utf16(ReadBytes(TempPath(L"Vellumkit_Install.log")));
}

} // namespace

TEST_F(LogFile, StartsWithByteOrderMarkAndLineBreak) {
    Write(L"entry x");
    EXPECT_EQ(ReadBytes(Path()).substr(0, 6), std::string("\xFF\xFE\x0D\x00\x0A\x00", 6));
}

TEST_F(LogFile, HoldsEachCharacterAsItsUtf16CodeUnits) {
    Write(L"entry Grüße-Љубав-重試-\xD83D\xDE00");
    EXPECT_EQ(ReadEntries(Path()), Entries{L"Grüße-Љубав-重試-\xD83D\xDE00"});
}

TEST_F(LogFile, HoldsOnlyTheLastRun) {
    Write(L"entry first entry second");
    Write(L"entry third");
    EXPECT_EQ(ReadEntries(Path()), Entries{L"third"});
}

TEST_F(LogFile, IsCompleteWhenTheProgramEndsWithoutClosingIt) {
    Write(L"entry first entry last");
    EXPECT_EQ(ReadEntries(Path()), (Entries{L"first", L"last"}));
}

TEST_F(LogFile, LosesWhatIsWrittenAfterItsClose) {
    Write(L"entry kept close entry lost");
    EXPECT_EQ(ReadEntries(Path()), Entries{L"kept"});
}

TEST_F(LogFile, FailsWhenItCannotBeClosed) {
    EXPECT_EQ(Write(L"entry x close state"), 0U);
    EXPECT_EQ(Write(L"entry x close close state"), 1U) << "it was closed already";
}

TEST_F(LogFile, GroupsNoDigitsWhateverTheLocale) {
    Write(L"grouping entry n= number");
    EXPECT_EQ(ReadEntries(Path()), Entries{L"n=4294967295"});
}

TEST_F(LogFile, IsOpenedOnceByThreadsThatStartTogetherAndSplitsNoInsertion) {
    Write(L"threads");
    std::wstring log = Utf16(ReadBytes(Path()));
    ASSERT_EQ(log.size(), 1 + 800 * 51U);
    EXPECT_EQ(log[0], L'\xFEFF');
    for (std::size_t start = 1; start < log.size(); start += 51) {
        const std::wstring insertion = log.substr(start, 51);
        EXPECT_EQ(insertion, std::wstring(50, insertion[0]) + L"|");
    }
}

TEST_F(LogFile, ThatCannotBeOpenedFailsSilently) {
    fs::create_directory(Path());
    EXPECT_EQ(Write(L"entry lost more lost number close entry lost"), 0U);
    EXPECT_EQ(Write(L"entry lost state"), 1U) << "the stream should have failed";
    EXPECT_TRUE(fs::is_directory(Path()));
}

TEST_F(LogFile, ThatCannotBeWrittenFailsForGood) {
    EXPECT_EQ(Write(L"entry kept state"), 0U);
    EXPECT_EQ(Write(L"entry kept write-fails entry lost write-works entry lost state"), 1U);
    EXPECT_EQ(ReadEntries(Path()), Entries{L"kept"});
}

TEST_F(LogFile, ThatCannotBeFlushedFailsForGood) {
    EXPECT_EQ(Write(L"entry kept flush-fails entry lost flush-works entry lost state"), 1U);
    EXPECT_TRUE(Utf16(ReadBytes(Path())).ends_with(L" - kept\r\n")) << "the file ends with what could not be flushed";
}

TEST_F(LogFile, ThatCouldNotBeOpenedIsNotOpenedLater) {
    fs::create_directory(Path());
    EXPECT_EQ(Write(L"entry lost remove-folder entry lost state"), 1U);
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LogFile, IsNotClosedInTheMiddleOfAWriteByAnotherThread) {
    EXPECT_EQ(Write(L"close-while-a-thread-writes"), 0U);
}

TEST_F(LogFile, IsNamedByTheFirstProgramOfTheListThatIsLoaded) {
    for (std::size_t index = 1; index < std::size(ProgramLogs); ++index) {
        const auto& [earlier, log] = ProgramLogs[index - 1];
        fs::copy_file(ProgramFolder() / "log-writer.exe", folder_.Path() / earlier,
                      fs::copy_options::overwrite_existing);
        Write(std::wstring(L"load \"") + earlier + L"\" entry x", ProgramLogs[index].first);
        EXPECT_EQ(ReadEntries(Path(log)), Entries{L"x"}) << fs::path(earlier).string();
    }
}

TEST_F(LogFile, IsNamedByTheProgramThatRuns) {
    for (const auto& [program, log] : ProgramLogs) {
        Write(L"entry x", program);
        EXPECT_EQ(ReadEntries(Path(log)), Entries{L"x"}) << fs::path(program).string();
        fs::remove(Path(log));
    }
}

TEST_F(LogFile, LiesInTheCurrentDirectoryWhenWindowsCannotNameTheTemporaryFolder) {
    Write(L"temp 0 entry x");
    EXPECT_EQ(ReadEntries(Path()), Entries{L"x"});
}

TEST_F(LogFile, BeginsAnEntryWithTheLocalTime) {
    constexpr std::time_t AheadOfUtc = 20700; // in Nepal, in seconds
    const std::time_t before = std::time(nullptr);
    Write(L"zone NPT-05:45 entry x");
    std::tm time{};
    std::wistringstream text(Utf16(ReadBytes(Path())).substr(3)); // behind mark and line break
    text >> std::get_time(&time, L"%a %b %d %H:%M:%S %Y");
    ASSERT_FALSE(text.fail());
    const std::time_t logged = _mkgmtime(&time) - AheadOfUtc;
    EXPECT_GE(logged, before);
    EXPECT_LE(logged, std::time(nullptr));
}

TEST(Log, WritesTheTimeWithEnglishNamesAPaddedDayAndLeadingZeros) {
    for (const std::wstring text :
         {L"Sun Jan  1 12:00:00 2023", L"Wed Feb  8 12:00:00 2023", L"Fri Mar 10 12:00:00 2023",
          L"Sat Apr  1 12:00:00 2023", L"Mon May 15 12:00:00 2023", L"Thu Jun 22 12:00:00 2023",
          L"Tue Jul 25 12:00:00 2023", L"Thu Aug 31 12:00:00 2023", L"Sat Sep 30 12:00:00 2023",
          L"Tue Oct 31 23:59:59 2023", L"Mon Nov  6 00:09:08 2023", L"Wed Dec 13 01:02:03 2023"}) {
        std::tm local{};
        std::wistringstream(text) >> std::get_time(&local, L"%a %b %d %H:%M:%S %Y");
        local.tm_isdst = -1;
        static std::time_t fixed;
        fixed = std::mktime(&local);
        const ImportPatch<std::time_t(std::time_t*)> time("_time64", [](std::time_t*) { return fixed; });
        Log(true) << L"x" << std::flush;
        const std::wstring log = OnDisk();
        EXPECT_EQ(log.substr(log.rfind(L"\r\n")), L"\r\n" + text + L" - x");
    }
}

TEST(Log, LeavesTheTimeOutWhenItCannotBeReadOrConverted) {
    const ImportPatch<std::time_t(std::time_t*)> time("_time64", [](std::time_t*) -> std::time_t { return -1; });
    Log(true) << L"x" << std::flush;
    const std::wstring log = OnDisk();
    EXPECT_EQ(log.substr(log.rfind(L"\r\n")), L"\r\n - x");
}

TEST(Log, PutsAnEntryOnDiskWhenTheNextOneBegins) {
    Log(true) << L"short";
    EXPECT_FALSE(OnDisk().ends_with(L"short")) << "it is still in memory";
    Log(true);
    EXPECT_TRUE(OnDisk().ends_with(L"short\r\n"));
}

TEST(Log, PutsAnEntryOnDiskWhenItsBufferOf1024CharactersIsFull) {
    Log(true) << std::flush;
    const std::size_t flushed = OnDisk().size();
    Log(false) << std::wstring(1023, L'x');
    EXPECT_EQ(OnDisk().size(), flushed) << "it is still in memory";
    Log(false) << L"xx";
    EXPECT_GE(OnDisk().size(), flushed + 1024);
}

TEST(Log, ReadsTheTimeBeforeTheFlushWhichMayTakeLong) {
    using Write = std::size_t(const void*, std::size_t, std::size_t, std::FILE*);
    static std::vector<std::string> calls;
    static auto* const Original = ImportedNow<Write>("fwrite");
    calls.clear();
    Log(false); // it is open from here on
    {
        const ImportPatch<std::time_t(std::time_t*)> time("_time64", [](std::time_t*) -> std::time_t {
            calls.emplace_back("time");
            return 0;
        });
        const ImportPatch<Write> write("fwrite",
                                       [](const void* text, std::size_t size, std::size_t count, std::FILE* file) {
                                           calls.emplace_back("write");
                                           return Original(text, size, count, file);
                                       });
        const ImportPatch<decltype(std::fflush)> flush("fflush", [](std::FILE*) {
            calls.emplace_back("flush");
            return 0;
        });
        Log(true);
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"time", "write", "flush", "write", "write"}));
}

TEST(Log, ContinuesAnEntryWithoutAPrefix) {
    const LoggedEntries entries;
    Log(true) << L"one";
    Log(false) << L" = two";
    EXPECT_EQ(entries.Get(), Entries{L"one = two"});
}

TEST(Log, WritesANulInsideATextAsItIs) {
    const LoggedEntries entries;
    Log(true) << std::wstring(L"a\0b", 3);
    EXPECT_EQ(entries.Get(), (Entries{std::wstring(L"a\0b", 3)}));
}

TEST(Log, TakesTheStandardManipulatorsAndKeepsThem) {
    const LoggedEntries entries;
    Log(true) << std::hex << std::showbase << 255 << L' ' << std::setw(6) << std::setfill(L'.') << L"x" << std::setw(3)
              << std::wstring(L"y");
    Log(true) << 16;
    Log(false) << std::dec << std::noshowbase << std::setfill(L' ');
    EXPECT_EQ(entries.Get(), (Entries{L"0xff .....x..y", L"0x10"}));
}

TEST(Log, MayBeReadAndWrittenByOthersWhileItIsOpen) {
    Log(true);
    const UniqueHandle other(CreateFileW(TempPath(L"Vellumkit_Install.log").c_str(), GENERIC_READ | GENERIC_WRITE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(other);
}

TEST(TempPath, IsTheTemporaryFolderWithTheSuffixAndNoSeparator) {
    wchar_t folder[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, folder);
    EXPECT_TRUE(std::wstring(folder).ends_with(L'\\'));
    EXPECT_EQ(TempPath(L""), folder);
    EXPECT_EQ(TempPath(L"x y"), std::wstring(folder) + L"x y");
}

TEST_F(TemporaryFolder, HasNoNameWhenWindowsCannotTellItOrItIsTooLong) {
    EXPECT_EQ(Write(L"temp 0 temp-size"), 0U);
    EXPECT_EQ(Write(L"temp 1023 temp-size"), 1023U) << "the longest that fits with its NUL";
    EXPECT_EQ(Write(L"temp 1024 temp-size"), 0U);
}

TEST_F(TemporaryFolder, IsAskedForUntilItHasAName) {
    EXPECT_EQ(Write(L"temp 0 temp-size temp 1 temp-size"), 1U);
    EXPECT_EQ(Write(L"temp 1 temp-size temp 2 temp-size"), 1U);
}
