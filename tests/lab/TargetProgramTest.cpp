#include "tests/support/LabPrograms.h"

#include <gtest/gtest.h>

namespace {

class LabProgram : public testing::TestWithParam<std::filesystem::path> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(, LabProgram, testing::Values(TargetProgram::OneNote(), TargetProgram::Datebookery()),
                         [](const auto& item) { return item.param.stem().string(); });

TEST_P(LabProgram, RunsUntilItIsTold) {
    const TargetProgram program(GetParam());
    EXPECT_TRUE(program.IsRunning());
    program.TellToEnd();
    EXPECT_EQ(program.ExitCode(), 0U);
}

TEST_P(LabProgram, ObeysBeingAskedToClose) {
    const TargetProgram program(GetParam());
    PostMessageW(program.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(program.ExitCode(), 0U);
}

TEST_P(LabProgram, IgnoresBeingAskedToCloseWhenItIsStubborn) {
    const TargetProgram program(GetParam(), L"/stubborn");
    SendMessageW(program.Window(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(IsWindow(program.Window()));
    EXPECT_EQ(WaitForSingleObject(program.Handle(), 500), static_cast<DWORD>(WAIT_TIMEOUT));
    program.TellToEnd();
    EXPECT_EQ(program.ExitCode(), 0U);
}
