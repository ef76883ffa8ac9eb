// What the real executable reports of a machine, and whether it then asks the user, on every machine of lab/office/.

#include "tests/support/LabOffice.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Machine.h"
#include "tests/support/WaitUntil.h"

#include <filesystem>
#include <set>

namespace {

struct OfficeMachine {
    const char* name;
    /// Of the description in lab/office/ and of the expected report.
    const wchar_t* file;
    /// OneNote or Office is registered for 32-bit programs only.
    bool asks;
};

class OfficeMachineReport : public WindowedMachine, public testing::WithParamInterface<OfficeMachine> {
    const LabOffice office_{GetParam().file};
};

/// Whether the first window of a front-end is the question.
bool AsksFirst(const Program& program) {
    HWND question = nullptr;
    WaitUntil("the first window of the front-end", [&] {
        question = FindWindowOf(program, L"#32770");
        return question != nullptr || FindWindowOf(program, L"WC_VELLUMKIT_INSTALLER") != nullptr;
    });
    return question != nullptr;
}

const OfficeMachine Machines[] = {
    {"WithoutOffice", L"no-office", false},
    {"Office2010", L"office-2010", true},
    {"ClickToRun32Bit", L"click-to-run-32-bit", true},
    {"ClickToRun64Bit", L"click-to-run-64-bit", false},
    {"Office64Bit", L"office-64-bit", false},
    {"OfficeDecides", L"office-decides", true},
    {"LeftoverLibrary", L"leftover-library", true},
    {"InterfaceIn32BitView", L"interface-in-32-bit-view", true},
    {"LibraryWithoutVersion", L"library-without-version", false},
    {"WrongTypes", L"wrong-types", true},
    {"ExpandablePaths", L"expandable-paths", true},
    {"UnterminatedValues", L"unterminated-values", true},
    {"X86InPaths", L"x86-in-paths", true},
    {"ShortPaths", L"short-paths", true},
    {"OtherIndex", L"other-index", true},
    {"ExistingFiles", L"existing-files", false},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(, OfficeMachineReport, testing::ValuesIn(Machines),
                         [](const auto& item) { return item.param.name; });

TEST_P(OfficeMachineReport, StandsInTheLogOfAnUnattendedInstallationThatAsksNobody) {
    EXPECT_EQ(Start(L"/config x").ExitCode(), 0U);
    ExpectReport(GetParam().file, L"/config x");
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair()}));
}

TEST_P(OfficeMachineReport, LeadsToTheQuestionOnlyWhereNothingButA32BitEditionIsRegistered) {
    ExpectVerdict(GetParam().asks ? Verdict::Asked : Verdict::Installed, GetParam().asks ? L"question" : L"");
    const Program program = Start(L"");
    ASSERT_EQ(AsksFirst(program), GetParam().asks);
    if (!GetParam().asks)
        ExpectInstalled(program);
}

TEST(OfficeMachines, AreAllReported) {
    std::set<std::filesystem::path> described;
    for (const auto& file : std::filesystem::directory_iterator(LabFolder() / "machines"))
        described.insert(file.path().stem());
    std::set<std::filesystem::path> reported;
    for (const OfficeMachine& machine : Machines)
        reported.insert(machine.file);
    EXPECT_EQ(described, reported);
}
