// What becomes of an installation with the real executable when something happens to the elevated installer.

#include "tests/support/InstallerScreen.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"
#include "tests/support/User.h"
#include "tests/support/WaitUntil.h"

#include <array>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

class ElevatedInstallerFate : public WindowedMachine {
protected:
    /// The process of the elevated installer, as soon as it runs, and so has been started.
    UniqueHandle AwaitPayload() const {
        UniqueHandle payload;
        WaitUntil("the elevated installer", [&] {
            for (const DWORD id : ProcessesNamed(L"Vellumkit Installer.exe")) {
                payload = UniqueHandle(OpenProcess(Access, FALSE, id));
                if (payload && RunsPayload(payload.Get()))
                    return PayloadHasRun();
            }
            return false;
        });
        return payload;
    }

    static void Kill(const UniqueHandle& payload, UINT exitCode) {
        EXPECT_TRUE(TerminateProcess(payload.Get(), exitCode)) << "error " << GetLastError();
    }

    bool PayloadHasRun() const { return fs::exists(Temporary() + L"Vellumkit_Elev.log"); }

    /// The log of a pass that ended when the payload should have been started.
    Entries LogOfNoStart(HRESULT result) const {
        Entries extraction = LogOfExtraction();
        extraction.pop_back(); // the wait
        return Joined({LogOfSearch(), extraction, {LogOfFailure(SystemErrorText(result))}});
    }

    static Entries LogOfExitCode(DWORD code) {
        return {L"ERROR: Installer reported failure: " + std::to_wstring(code),
                LogOfFailure(SystemErrorText(static_cast<HRESULT>(code)))};
    }

private:
    static constexpr DWORD Access = PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE;

    /// Neither one of another test that is still listed nor one that has ended.
    bool RunsPayload(HANDLE process) const {
        std::array<wchar_t, 1024> file{};
        DWORD length = file.size();
        std::error_code missing;
        return WaitForSingleObject(process, 0) == WAIT_TIMEOUT &&
               QueryFullProcessImageNameW(process, 0, file.data(), &length) &&
               fs::equivalent(file.data(), Target(), missing);
    }
};

constexpr int Hanging = 50000; // milliseconds, longer than the test

/// After the writing, when the file is opened to keep it from changing. On a machine without type libraries it is the
/// only one that the installer opens for reading.
Interceptions AfterTheWriting(Interception interception) {
    return {{"CreateFileW", [interception = std::move(interception)](const auto& arguments) -> std::optional<Answer> {
                 if (arguments[1] != GENERIC_READ)
                     return {};
                 InterceptNoMore();
                 return interception(arguments);
             }}};
}

} // namespace

TEST_F(ElevatedInstallerFate, BeginsWithoutTheErrorModeOfTheInstaller) {
    const UINT own = SetErrorMode(0); // which a program that is started from here inherits
    EXPECT_EQ(Install(), 0U);
    SetErrorMode(own);
    EXPECT_EQ(ReadEntries(Temporary() + L"Vellumkit_Elev.log").at(1), L"Error mode: 0");
}

TEST_F(ElevatedInstallerFate, HangingIsWaitedForWithoutALimitAndEndsThePassWhenItIsKilled) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    const Program frontEnd = Start(L"/config \"" + Configuration(L"0", Hanging) + L'"');
    const UniqueHandle payload = AwaitPayload();
    EXPECT_EQ(WaitForSingleObject(frontEnd.Handle(), 4000), static_cast<DWORD>(WAIT_TIMEOUT));
    Kill(payload, 0xC000013A);
    EXPECT_EQ(frontEnd.ExitCode(), 1U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfExitCode(0xC000013A)}));
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), std::nullopt);
}

TEST_F(ElevatedInstallerFate, KilledWithoutAnErrorCodeCountsAsSuccess) {
    const Program frontEnd = Start(L"/config \"" + Configuration(L"5", Hanging) + L'"');
    Kill(AwaitPayload(), 0);
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair()}));
}

TEST_F(ElevatedInstallerFate, HangingOutlastsTheWindow) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    Configuration(L"0", Hanging);
    const Program frontEnd = Start(L"");
    const InstallerScreen screen(frontEnd);
    screen.Await(ScreenStatus::Installing);
    const UniqueHandle payload = AwaitPayload();
    screen.ClickCloseBox();
    screen.AwaitEnd();
    EXPECT_EQ(WaitForSingleObject(frontEnd.Handle(), 2000), static_cast<DWORD>(WAIT_TIMEOUT));
    Kill(payload, 9);
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLog(Joined({LogOfSearch(),
                      LogOfExtraction(),
                      LogOfExitCode(9),
                      {L"Waiting for a signal", L"Exit signalled, returning from background process"}}));
}

TEST_F(ElevatedInstallerFate, ReplacedBeforeItsStartIsNotStarted) {
    ExpectVerdict(Verdict::Failed, L"elevation");
    std::string replacement = ReadBytes(ElevatedInstaller()) + '\0'; // a program that would run and say so
    const Interception replace = Before([&] { std::ofstream(fs::path(Target()), std::ios::binary) << replacement; });
    EXPECT_EQ(InstallIntercepting(AfterTheWriting(replace)), 1U);
    ExpectLog(LogOfNoStart(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION)));
    EXPECT_TRUE(ReadBytes(Target()) == replacement);
    EXPECT_FALSE(PayloadHasRun());
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), std::nullopt);
}

TEST_F(ElevatedInstallerFate, DeletedBeforeItsStartFailsThePass) {
    ExpectVerdict(Verdict::Failed, L"elevation");
    const User::ConfirmedBoxes boxes; // the shell's
    EXPECT_EQ(InstallIntercepting(AfterTheWriting(Before([&] { fs::remove(Target()); }))), 1U);
    // Wine's shell loses the code behind its message box.
    const bool lost = Logged().back() == LogOfFailure(SystemErrorText(0));
    ExpectLog(LogOfNoStart(lost ? 0 : HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)));
    EXPECT_FALSE(PayloadHasRun());
}

TEST_F(ElevatedInstallerFate, ThatCannotBeKeptFromChangingIsStartedAllTheSame) {
    const Answer refusal{reinterpret_cast<ULONG_PTR>(INVALID_HANDLE_VALUE), ERROR_SHARING_VIOLATION};
    EXPECT_EQ(InstallIntercepting(AfterTheWriting(Answering(refusal))), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair()}));
    EXPECT_TRUE(PayloadHasRun());
}
