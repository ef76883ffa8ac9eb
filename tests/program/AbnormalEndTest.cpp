// How the real executable ends on an error that nothing catches.

#include "tests/support/Machine.h"

namespace {

constexpr DWORD StatusFatalAppExit = 0x40000015;

using AbnormalEnd = Machine;

class UncaughtError : public testing::TestWithParam<const wchar_t*> {};

} // namespace

TEST_F(AbnormalEnd, IsAtOnceAndWithoutADialogWhenComCannotBeInitialised) {
    // ReadClassStm answers the null argument with E_INVALIDARG.
    const std::filesystem::path program = CopyFrontEndThatCalls("ReadClassStm", "CoInitialize");
    for (const wchar_t* arguments : {L"/config x", L""}) {
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(Program(program, arguments, Temporary()).ExitCode(), StatusFatalAppExit);
        EXPECT_LT(GetTickCount64() - start, 5000U);
    }
    EXPECT_FALSE(std::filesystem::exists(Target())) << "nothing may be installed";
}

TEST_F(AbnormalEnd, IsAtOnceAndWithoutADialogWhenTheLogoIsMissing) {
    const std::filesystem::path program = CopyFrontEnd();
    const HANDLE update = BeginUpdateResourceW(program.c_str(), TRUE); // no resource is left
    EXPECT_TRUE(EndUpdateResourceW(update, FALSE));
    EXPECT_EQ(Program(program, L"", Temporary()).ExitCode(), StatusFatalAppExit);
    EXPECT_FALSE(std::filesystem::exists(Target())) << "nothing may be installed";
    EXPECT_EQ(Program(program, L"/config x", Temporary()).ExitCode(), 1U) << "without a window it needs no logo";
}

// Errors that the front-end can't be brought to, made by a windowed program that is guarded in the same way.

TEST_P(UncaughtError, EndsTheProcessAtOnceAndWithoutADialog) {
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(Program(ProgramFolder() / "uncaught-error.exe", GetParam()).ExitCode(), StatusFatalAppExit);
    EXPECT_LT(GetTickCount64() - start, 5000U);
}

INSTANTIATE_TEST_SUITE_P(, UncaughtError,
                         testing::Values(L"com", L"standard", L"thread", L"pool", L"noexcept", L"fault", L"abort"),
                         [](const auto& item) { return std::filesystem::path(item.param).string(); });
