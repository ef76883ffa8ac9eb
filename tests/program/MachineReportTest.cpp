// What the real executable reports of a machine, and whether it then asks the user, on every machine of lab/office/.

#include "tests/support/LabOffice.h"
#include "tests/support/Machine.h"
#include "tests/support/Watchdog.h"

#include <algorithm>

namespace {

struct OfficeMachine {
    const char* name;
    /// Of the description in lab/office/ and of the expected report.
    const wchar_t* file;
    /// OneNote or Office is registered for 32-bit programs only.
    bool asks;
};

class OfficeMachineReport : public Machine, public testing::WithParamInterface<OfficeMachine> {
protected:
    /// The expected report; ␀ stands for the NUL that most values are stored with.
    static Entries ExpectedReport() {
        Entries report = ReadLines(ProgramFolder() / "reports" / (std::wstring(GetParam().file) + L".txt"));
        for (std::wstring& entry : report)
            std::ranges::replace(entry, L'␀', L'\0');
        return report;
    }

    const LabOffice office_{GetParam().file};
};

/// The first window that a program shows.
std::wstring ClassOfFirstWindow(const Program& program) {
    const Watchdog::Waiting waiting("the first window of the front-end");
    for (;; Sleep(20)) {
        for (const wchar_t* windowClass : {L"#32770", L"WC_VELLUMKIT_INSTALLER"}) {
            if (FindWindowOf(program, windowClass) != nullptr)
                return windowClass;
        }
    }
}

} // namespace

INSTANTIATE_TEST_SUITE_P(, OfficeMachineReport,
                         testing::Values(OfficeMachine{"WithoutOffice", L"no-office", false},
                                         OfficeMachine{"Office2010", L"office-2010", true},
                                         OfficeMachine{"ClickToRun32Bit", L"click-to-run-32-bit", true},
                                         OfficeMachine{"ClickToRun64Bit", L"click-to-run-64-bit", false},
                                         OfficeMachine{"Office64Bit", L"office-64-bit", false},
                                         OfficeMachine{"OfficeDecides", L"office-decides", true},
                                         OfficeMachine{"LeftoverLibrary", L"leftover-library", true},
                                         OfficeMachine{"InterfaceIn32BitView", L"interface-in-32-bit-view", true},
                                         OfficeMachine{"LibraryWithoutVersion", L"library-without-version", false},
                                         OfficeMachine{"WrongTypes", L"wrong-types", true},
                                         OfficeMachine{"ExpandablePaths", L"expandable-paths", true},
                                         OfficeMachine{"UnterminatedValues", L"unterminated-values", true},
                                         OfficeMachine{"X86InPaths", L"x86-in-paths", true},
                                         OfficeMachine{"ShortPaths", L"short-paths", true},
                                         OfficeMachine{"OtherIndex", L"other-index", true},
                                         OfficeMachine{"ExistingFiles", L"existing-files", false}),
                         [](const auto& item) { return item.param.name; });

TEST_P(OfficeMachineReport, StandsInTheLogOfAnUnattendedInstallationThatAsksNobody) {
    EXPECT_EQ(Start(L"/config x").ExitCode(), 0U);
    ExpectReport(ExpectedReport());
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair()}));
}

TEST_P(OfficeMachineReport, LeadsToTheQuestionOnlyWhereNothingButA32BitEditionIsRegistered) {
    const Program program = Start(L"");
    EXPECT_EQ(ClassOfFirstWindow(program), GetParam().asks ? L"#32770" : L"WC_VELLUMKIT_INSTALLER");
}
