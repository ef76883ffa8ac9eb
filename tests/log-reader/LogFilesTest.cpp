#include "support/LogFiles.h"

#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Machine.h"
#include "tests/support/TestFolder.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

class LogFiles : public testing::Test {
protected:
    const fs::path& Folder() const { return folder_.Path(); }

    void Make(const fs::path& name) const {
        fs::create_directories((Folder() / name).parent_path());
        std::ofstream(Folder() / name) << "x";
    }

    /// What is found there, without the folder.
    std::vector<std::wstring> Find(const std::wstring& argument) const {
        std::vector<std::wstring> found;
        for (const fs::path& log : FindLogs((Folder() / argument).wstring()))
            found.push_back(log.wstring().substr(Folder().wstring().size() + 1));
        return found;
    }

private:
    TestFolder folder_;
};

HANDLE WINAPI RefuseToList(const wchar_t* /*pattern*/, WIN32_FIND_DATAW* /*entry*/) {
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI FailToGoOn(HANDLE /*find*/, WIN32_FIND_DATAW* /*entry*/) {
    SetLastError(ERROR_NETNAME_DELETED);
    return FALSE;
}

} // namespace

TEST_F(LogFiles, OfAFolderAreThoseWithTheExtension) {
    for (const char* name : {"a.log", "b/c.LOG", "b/d/e.log", "f.txt", "log", "g.logs"})
        Make(name);
    fs::create_directory(Folder() / "folder.log");
    EXPECT_EQ(Find(L""), (std::vector<std::wstring>{L"a.log", L"b\\c.LOG", L"b\\d\\e.log"}));
    EXPECT_EQ(Find(L"folder.log"), std::vector<std::wstring>());
}

TEST_F(LogFiles, OfAWildcardAreThoseThatItFits) {
    for (const char* name : {"a;b1.log", "a;b2.txt", "c.log"})
        Make(name);
    fs::create_directory(Folder() / "a;b.log");
    EXPECT_EQ(Find(L"a;b?.*"), (std::vector<std::wstring>{L"a;b1.log", L"a;b2.txt"}));
    EXPECT_EQ(Find(L"x*"), std::vector<std::wstring>());
    EXPECT_EQ(Find(L"none\\*.log"), std::vector<std::wstring>());
}

TEST_F(LogFiles, AreWhatIsNamedWhetherItIsThereOrNot) {
    EXPECT_EQ(FindLogs(L"missing.txt"), std::vector<fs::path>{L"missing.txt"});
    EXPECT_EQ(FindLogs(L""), std::vector<fs::path>());
}

TEST_F(LogFiles, HaveAFolderAmongThemThatCannotBeListed) {
    Make("a.log");
    {
        const ImportPatch<decltype(FindFirstFileW)> patch("FindFirstFileW", RefuseToList);
        EXPECT_EQ(FindLogs(Folder().wstring()), std::vector<fs::path>{Folder()});
    }
    const ImportPatch<decltype(FindNextFileW)> patch("FindNextFileW", FailToGoOn);
    const auto logs = FindLogs(Folder().wstring());
    EXPECT_NE(std::ranges::find(logs, Folder()), logs.end()) << "listed in part";
}

TEST_F(LogFiles, ThatCannotBeReadSayWhy) {
    for (const fs::path& file : {Folder(), Folder() / "missing.log"}) {
        const Findings findings = ReadLogFile(file);
        EXPECT_EQ(findings.verdict, Verdict::Unreadable);
        EXPECT_EQ(findings.message,
                  SystemErrorText(HRESULT_FROM_WIN32(file == Folder() ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND)));
    }
}
