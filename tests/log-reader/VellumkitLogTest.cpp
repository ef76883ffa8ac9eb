// The log reader's executable.

#include "tests/support/Program.h"
#include "tests/support/SampleLog.h"
#include "tests/support/TestFolder.h"

#include <psapi.h>

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

class VellumkitLog : public testing::Test {
protected:
    struct Result {
        DWORD exitCode;
        std::wstring output;
        std::wstring errors;
    };

    /// Runs it in the test's folder.
    Result Run(const std::wstring& arguments) const {
        std::array<wchar_t, MAX_PATH> system{};
        GetSystemDirectoryW(system.data(), MAX_PATH);
        const std::wstring command = L"/s /c \"\"" + Reader().wstring() + L"\" " + arguments + L" >out.txt 2>err.txt\"";
        const DWORD exitCode = Program(fs::path(system.data()) / "cmd.exe", command, {}, Folder()).ExitCode();
        return {exitCode, Utf8(ReadBytes(Folder() / "out.txt")), Utf8(ReadBytes(Folder() / "err.txt"))};
    }

    static fs::path Reader() { return ProgramFolder().parent_path() / "VellumkitLog.exe"; }

    const fs::path& Folder() const { return folder_.Path(); }

    void Save(const fs::path& name, const SampleLog& log) const {
        fs::create_directories((Folder() / name).parent_path());
        std::ofstream(Folder() / name, std::ios::binary) << Utf16Bytes(log.Text());
    }

private:
    TestFolder folder_;
};

SampleLog Installed() {
    return SampleLog().WriteReport(L"/config \"C:\\a, b.ini\"").WriteInstallation();
}

SampleLog Failed() {
    return SampleLog()
        .WriteReport(L"/config x")
        .Write(SampleSearch())
        .After(61)
        .Write(SampleExtraction())
        .Write({L"ERROR: Installer reported failure: 5", L"ERROR: Installation failed:\n\nKeine \"Rechte\" (0x5)"});
}

std::wstring Replaced(std::wstring text, std::wstring_view old, std::wstring_view replacement) {
    for (std::size_t place = text.find(old); place != std::wstring::npos;
         place = text.find(old, place + replacement.size()))
        text.replace(place, old.size(), replacement);
    return text;
}

} // namespace

TEST_F(VellumkitLog, ShowsAPageForALog) {
    Save("a.log", Failed());
    const Result result = Run(L"a.log");
    EXPECT_EQ(result.exitCode, 1U);
    EXPECT_EQ(result.errors, L"");
    EXPECT_EQ(result.output,
              L"a.log\r\n"
              L"\r\n"
              L"Result      The installation failed with 0x5.\r\n"
              L"Step        elevated-installer\r\n"
              L"Cause       The elevated installer. The number is its exit code.\r\n"
              L"Meaning     Mostly the exit code of the elevated installer, which has meanings of its own.\r\n"
              L"What to do  Read the elevated installer's own log.\r\n"
              L"Message     Keine \"Rechte\" (0x5)\r\n"
              L"Version     4.5.1\r\n"
              L"Begun       2026-11-21 21:14:32, for 1 min 1 s, passes: 1\r\n"
              L"Mode        without a window: /config x\r\n"
              L"OneNote     not registered\r\n"
              L"Office      not registered\r\n"
              L"Steps       payload 1 min 1 s\r\n");
}

TEST_F(VellumkitLog, ShowsWhatTheDocumentShows) {
    const std::wstring waited = L"OneNote is still running after ";
    SampleLog failed(Replaced(SampleLog().WriteReport(L"/config C:\\deploy.ini", L"office-64-bit").Text(),
                              L"Error: File DOES NOT exist", L"File exists"));
    failed.Write({L"Begin processing", L"Begin processing", L"Checking if OneNote is running",
                  L"Found process 'datebk.exe'", L"OneNote is still running. Waiting..."});
    failed.After(5).Write({waited + L"5 seconds. Attempting to close windows"});
    failed.After(50).Write({waited + L"50 seconds. Attempting to terminate process",
                            L"State: Installing - OneNote is not running, continuing with install"});
    Entries extraction = SampleExtraction();
    extraction.pop_back();
    SampleLog unfinished = failed;
    unfinished.Write(extraction);
    failed.Write(extraction).After(1).Write({L"Waiting for installer to finish"}).After(3);
    failed.Write(
        {L"ERROR: Installer reported failure: 4294967197",
         L"ERROR: Installation failed:\n\nFailed to create temporary file. Make sure you have enough disk space "
         L"and then click Retry. (0xffffff9d)"});
    Save("collected/PC-0173.log", failed);
    Save("collected/PC-0174.log", Installed());
    std::ofstream(Folder() / "collected/PC-0175.log", std::ios::binary) << Utf16Bytes(unfinished.Text() + L"\r\n");

    const std::wstring document = Utf8(ReadBytes(ProgramFolder() / "log.md"));
    const std::wstring shown = Replaced(document, L"C:\\collected", L"collected");
    for (const wchar_t* path : {L"collected\\PC-0173.log", L"collected"}) {
        const std::wstring transcript =
            L"C:\\>VellumkitLog " + std::wstring(path) + L'\n' + Replaced(Run(path).output, L"\r\n", L"\n") + L'\n';
        EXPECT_NE(shown.find(transcript), std::wstring::npos) << testing::PrintToString(transcript);
    }
}

TEST_F(VellumkitLog, ShowsALineForEachOfSeveralLogs) {
    Save("logs/a.log", Installed());
    Save("logs/below/b.LOG", Failed());
    Save("logs/c.txt", Failed());
    const Result result = Run(L"logs");
    EXPECT_EQ(result.exitCode, 1U);
    EXPECT_EQ(result.output,
              L"installed                                   4.5.1     2026-11-21 21:14:32  logs\\a.log\r\n"
              L"failed      0x5         elevated-installer  4.5.1     2026-11-21 21:14:32  logs\\below\\b.LOG\r\n");
}

TEST_F(VellumkitLog, TakesWildcards) {
    Save("logs/a1.log", Installed());
    Save("logs/a2.txt", Installed());
    Save("logs/b1.log", Failed());
    EXPECT_EQ(Run(L"logs\\a?.*").exitCode, 0U);
    EXPECT_EQ(Run(L"logs\\*.log").exitCode, 1U);
    const Result none = Run(L"logs\\x*");
    EXPECT_EQ(none.exitCode, 2U);
    EXPECT_EQ(none.errors, L"VellumkitLog: there is no log in 'logs\\x*'.\r\n");
}

TEST_F(VellumkitLog, WritesATable) {
    Save("a.log", Failed());
    const Result result = Run(L"/csv a.log");
    EXPECT_EQ(result.exitCode, 1U);
    EXPECT_EQ(
        result.output,
        L"\xFEFF"
        L"file,verdict,code,step,cause,meaning,advice,message,version,begun,seconds,attended,commandLine,"
        L"language,asked,passes,oneNote,oneNotePath,office,officePath,terminated,repaired,steps,unknown,disbelieved,"
        L"notes\r\n"
        L"a.log,failed,0x5,elevated-installer,The elevated installer. The number is its exit code.,"
        L"\"Mostly the exit code of the elevated installer, which has meanings of its own.\","
        L"Read the elevated installer's own log.,\"Keine \"\"Rechte\"\" (0x5)\",4.5.1,2026-11-21T21:14:32,61,false,"
        L"/config x,en,false,1,not registered,,not registered,,,,payload 61,0,0,\r\n");
}

TEST_F(VellumkitLog, WritesNoFormulaIntoATable) {
    Save("=1+1.log", SampleLog().WriteReport(L"-x").WriteInstallation());
    const std::wstring table = Run(L"/csv =1+1.log").output;
    EXPECT_NE(table.find(L"\r\n'=1+1.log,"), std::wstring::npos);
    EXPECT_NE(table.find(L",'-x,"), std::wstring::npos);
}

TEST_F(VellumkitLog, WritesJson) {
    Save("a.log", Installed());
    Save("b.log", Failed());
    const Result result = Run(L"/json a.log b.log");
    EXPECT_EQ(result.exitCode, 1U);
    EXPECT_TRUE(
        result.output.starts_with(L"[\r\n  {\r\n    \"file\": \"a.log\",\r\n    \"verdict\": \"installed\",\r\n"));
    for (const wchar_t* member :
         {L"    \"code\": \"0x5\",\r\n", L"    \"message\": \"Keine \\\"Rechte\\\" (0x5)\",\r\n",
          L"    \"seconds\": 61,\r\n", L"    \"attended\": false,\r\n", L"    \"terminated\": [],\r\n",
          L"    \"repaired\": [\"HKCU\\\\Software", L"    \"steps\": {\"payload\": 61},\r\n"})
        EXPECT_NE(result.output.find(member), std::wstring::npos) << testing::PrintToString(std::wstring(member));
    EXPECT_TRUE(result.output.ends_with(L"    \"notes\": []\r\n  }\r\n]\r\n"));
}

TEST_F(VellumkitLog, TellsItsExitCode) {
    Save("good.log", Installed());
    Save("bad.log", Failed());
    std::ofstream(Folder() / "other.log") << "Hello\n";
    EXPECT_EQ(Run(L"good.log").exitCode, 0U);
    EXPECT_EQ(Run(L"good.log good.log").exitCode, 0U);
    EXPECT_EQ(Run(L"good.log bad.log").exitCode, 1U);
    EXPECT_EQ(Run(L"bad.log good.log").exitCode, 1U);
    EXPECT_EQ(Run(L"good.log other.log bad.log").exitCode, 2U);
    const Result missing = Run(L"bad.log missing.log");
    EXPECT_EQ(missing.exitCode, 2U);
    EXPECT_NE(missing.output.find(L"unreadable"), std::wstring::npos);
}

TEST_F(VellumkitLog, AnswersABadArgumentInOneLine) {
    Save("a.log", Installed());
    const struct {
        const wchar_t* arguments;
        const wchar_t* answer;
    } cases[] = {
        {L"", L"which log? VellumkitLog /? tells more."},
        {L"/csv", L"which log? VellumkitLog /? tells more."},
        {L"--xml a.log", L"unknown option '--xml'. VellumkitLog /? lists them."},
        {L"-x a.log", L"unknown option '-x'. VellumkitLog /? lists them."},
        {L"\"\"", L"there is no log in ''."},
        {L"/xml a.log", L"unknown option '/xml'. VellumkitLog /? lists them."},
        {L"/csv /json a.log", L"/json and /csv exclude each other."},
        {L"a.log nothing*", L"there is no log in 'nothing*'."},
    };
    for (const auto& item : cases) {
        const Result result = Run(item.arguments);
        EXPECT_EQ(result.exitCode, 2U);
        EXPECT_EQ(result.output, L"");
        EXPECT_EQ(result.errors, std::wstring(L"VellumkitLog: ") + item.answer + L"\r\n");
    }
    EXPECT_TRUE(Run(L"\"folder\\\" /json").errors.starts_with(L"VellumkitLog: no path has a quote: 'folder\" /json"));
    for (const wchar_t* help : {L"/?", L"-?", L"--help", L"a.log /?"}) {
        const Result result = Run(help);
        EXPECT_EQ(result.exitCode, 0U);
        EXPECT_TRUE(result.output.starts_with(L"Usage: VellumkitLog [/json | /csv] PATH...\r\n"));
    }
    EXPECT_EQ(Run(L"/JSON a.log").output, Run(L"-json a.log").output);
}

TEST_F(VellumkitLog, ShowsNoControlCharactersOfALog) {
    Save("a.log", SampleLog().WriteReport(L"/config \x1B[2J").WriteInstallation());
    EXPECT_EQ(Run(L"a.log").output.find(L'\x1B'), std::wstring::npos);
    EXPECT_NE(Run(L"a.log").output.find(L"/config \xFFFD[2J"), std::wstring::npos);
}

TEST_F(VellumkitLog, ReadsALogThatTheInstallerIsWriting) {
    Save("a.log", Installed());
    const fs::path file = Folder() / "a.log";
    const UniqueHandle writer(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_EQ(Run(L"a.log").exitCode, 0U);
}

TEST_F(VellumkitLog, ReadsEveryLogOfAFolder) {
    const std::wstring top = L"\\\\?\\" + Folder().wstring() + L"\\logs\\b";
    std::wstring folder = top;
    fs::create_directories(Folder() / "logs");
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    while (folder.size() < 400) { // more than MAX_PATH
        folder += L"\\" + std::wstring(100, L'x');
        ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr)) << GetLastError();
    }
    Save("logs/a/first.log", Installed());
    Save("logs/z.log", Installed());
    ASSERT_TRUE(CopyFileW((Folder() / "logs" / "z.log").c_str(), (folder + L"\\deep.log").c_str(), TRUE));
    const Result result = Run(L"logs");
    EXPECT_EQ(result.exitCode, 0U);
    EXPECT_EQ(std::ranges::count(result.output, L'\n'), 3);
    EXPECT_NE(result.output.find(L"\\deep.log\r\n"), std::wstring::npos);
    ASSERT_TRUE(DeleteFileW((folder + L"\\deep.log").c_str()));
    for (; folder.size() >= top.size(); folder.resize(folder.rfind(L'\\')))
        ASSERT_TRUE(RemoveDirectoryW(folder.c_str())) << GetLastError();
}

TEST_F(VellumkitLog, ReadsNoDevice) {
    EXPECT_EQ(Run(L"NUL").exitCode, 2U);
    EXPECT_NE(Run(L"NUL").output.find(L"The file can't be read."), std::wstring::npos);
}

TEST_F(VellumkitLog, TellsThatItsOutputCannotBeWritten) {
    Save("a.log", Installed());
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const UniqueHandle readOnly(CreateFileW((Folder() / "a.log").c_str(), GENERIC_READ, FILE_SHARE_READ, &inherited,
                                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = readOnly.Get();
    std::wstring commandLine = L"\"" + Reader().wstring() + L"\" a.log";
    PROCESS_INFORMATION information{};
    ASSERT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, Folder().c_str(),
                               &startup, &information));
    CloseHandle(information.hThread);
    const UniqueHandle process(information.hProcess);
    WaitForSingleObject(process.Get(), INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.Get(), &exitCode);
    EXPECT_EQ(exitCode, 2U);
}

TEST_F(VellumkitLog, ReadsHalfAGigabyteInAFewMegabytesOfMemory) {
    const std::string installed = Utf16Bytes(Installed().Text());
    std::string chunk;
    while (chunk.size() < 50'000'000)
        chunk += installed;
    {
        std::ofstream file(Folder() / "a.log", std::ios::binary);
        for (int i = 0; i < 10; ++i)
            file << chunk;
    }
    ASSERT_GE(fs::file_size(Folder() / "a.log"), 500'000'000U);
    const Program reader(Reader(), L"a.log", {}, Folder());
    SIZE_T most = 0;
    while (reader.IsRunning()) {
        PROCESS_MEMORY_COUNTERS memory{};
        GetProcessMemoryInfo(reader.Handle(), &memory, sizeof memory);
        most = std::max(most, memory.WorkingSetSize);
        Sleep(10);
    }
    EXPECT_EQ(reader.ExitCode(), 0U);
    EXPECT_GT(most, 0U);
    EXPECT_LT(most, 32U << 20);
}
