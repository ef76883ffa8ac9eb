// Unattended installations with the real executable and a temporary folder that is not as it should be.

#include "tests/support/Machine.h"
#include "tests/support/Registry.h"
#include "tests/support/User.h"

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

class TemporaryFolder : public Machine {
protected:
    static void ExpectNothingInstalled() { EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), std::nullopt); }

    /// One whose name makes the path of the payload that long.
    fs::path WithAPayloadPathOf(std::size_t length) const {
        const std::size_t rest = Target().size() + 1;
        fs::path folder = fs::path(Temporary()) / std::wstring(length - rest, L'x');
        EXPECT_TRUE(fs::create_directory(folder));
        EXPECT_EQ((folder / L"Vellumkit" / L"Vellumkit Installer.exe").wstring().size(), length);
        return folder;
    }
};

/// Lets calls be made that write so much together, and fails the others. How much one writes is its third argument.
Interception FailingAfter(std::size_t limit, ULONG_PTR failure) {
    return [limit, failure, written = std::size_t{0}](const auto& arguments) mutable -> std::optional<Answer> {
        written += arguments[2];
        if (written > limit)
            return Answer{failure, ERROR_DISK_FULL};
        return {};
    };
}

} // namespace

TEST_F(TemporaryFolder, ThatIsAFileFailsThePassWithoutALog) {
    const fs::path file = fs::path(Temporary()) / L"file";
    std::ofstream(file) << "x";
    EXPECT_EQ(Program(FrontEnd(), L"/config x", file).ExitCode(), 1U);
    EXPECT_EQ(ReadBytes(file), "x");
    ExpectNothingInstalled();
}

TEST_F(TemporaryFolder, ThatCannotBeWrittenFailsThePassWithoutALog) {
    EXPECT_EQ(InstallIntercepting({{"_wfsopen", Answering({.error = ERROR_ACCESS_DENIED})},
                                   {"CreateDirectoryW", Answering({.error = ERROR_ACCESS_DENIED})}}),
              1U);
    EXPECT_FALSE(fs::exists(Temporary() + L"Vellumkit"));
    EXPECT_FALSE(fs::exists(Temporary() + L"Vellumkit_Install.log"));
    ExpectNothingInstalled();
}

TEST_F(TemporaryFolder, ThatTakesNoFolderFailsThePassWithTheSystemsCode) {
    ExpectVerdict(Verdict::Failed, L"payload");
    EXPECT_EQ(InstallIntercepting({{"CreateDirectoryW", Answering({.error = ERROR_ACCESS_DENIED})}}), 1U);
    ExpectLog(Joined({LogOfSearch(),
                      {L"Folder path is: " + Temporary() + L"Vellumkit", L"Folder does not exist, creating...",
                       LogOfFailure(SystemErrorText(E_ACCESSDENIED))}}));
}

TEST_F(TemporaryFolder, ThatIsFullLeavesThePayloadToTheShell) {
    ExpectVerdict(Verdict::Failed, L"elevation");
    const User::ConfirmedBoxes boxes; // the shell tells of a damaged program in one
    EXPECT_EQ(InstallIntercepting({{"WriteFile",
                                    [](const auto& /*arguments*/) {
                                        InterceptNoMore();
                                        return Answer{FALSE, ERROR_DISK_FULL};
                                    }}}),
              1U);
    EXPECT_EQ(ReadBytes(Target()), "");
    const Entries log = Logged();
    EXPECT_TRUE(log.back().starts_with(L"ERROR: Installation failed:\n\n")) << testing::PrintToString(log.back());
    EXPECT_EQ(log.at(log.size() - 2), L"    Done.") << "that it was not written whole is not noticed";
    ExpectNothingInstalled();
}

TEST_F(TemporaryFolder, ThatIsFullFromTheStartTakesNothingButTheLog) {
    ExpectVerdict(Verdict::Unfinished, L"report");
    EXPECT_EQ(InstallIntercepting({{"fwrite", FailingAfter(0, 0)}}), 0U);
    EXPECT_EQ(ReadBytes(Temporary() + L"Vellumkit_Install.log"), "");
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xA80));
}

TEST_F(TemporaryFolder, ThatFillsUpCutsTheLog) {
    EXPECT_EQ(InstallIntercepting({{"fwrite", FailingAfter(1000, 0)}}), 0U);
    const fs::path log = Temporary() + L"Vellumkit_Install.log";
    const std::wstring text = Utf16(ReadBytes(log));
    EXPECT_EQ(text[0], L'\xFEFF');
    EXPECT_EQ(ParseEntries(text)[0], L"Running 64-bit Installer on 64-bit Windows");
    EXPECT_GT(text.size(), 900U);
    EXPECT_LE(text.size(), 1000U);
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xA80));
    fs::remove(log); // it may be cut within an entry
}

TEST_F(TemporaryFolder, ServesUpToTheLongestPath) {
    const fs::path folder = WithAPayloadPathOf(MAX_PATH - 1);
    EXPECT_EQ(Program(FrontEnd(), L"/config x", folder).ExitCode(), 0U);
    EXPECT_EQ(ReadEntries(folder / L"Vellumkit_Install.log").back(), L"State: Complete");
    EXPECT_EQ(ReadEntries(folder / L"Vellumkit_Elev.log").back(), L"Exit code: 0");
}

TEST_F(TemporaryFolder, BeyondTheLongestPathServesOrFailsThePass) {
    const User::ConfirmedBoxes boxes; // the shell's
    const fs::path folder = WithAPayloadPathOf(MAX_PATH);
    const DWORD exitCode = Program(FrontEnd(), L"/config x", folder).ExitCode();
    const std::wstring last = ReadEntries(folder / L"Vellumkit_Install.log").back();
    if (exitCode == 0)
        EXPECT_EQ(last, L"State: Complete");
    else
        EXPECT_TRUE(last.starts_with(L"ERROR: Installation failed:\n\n")) << testing::PrintToString(last);
    EXPECT_EQ(fs::exists(folder / L"Vellumkit_Elev.log"), exitCode == 0);
}
