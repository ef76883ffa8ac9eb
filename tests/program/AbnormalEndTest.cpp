// How the real executable ends on an error that nothing catches.

#include "tests/support/LogText.h"
#include "tests/support/Machine.h"

#include <fstream>

namespace {

constexpr DWORD StatusFatalAppExit = 0x40000015;

class AbnormalEnd : public Machine {
protected:
    /// A copy of the front-end that calls another function instead of one that it imports. The loader binds by name, so
    /// the new name must not be longer and the library must have it.
    std::filesystem::path WithImportRenamed(const std::string& from, const std::string& to) const {
        std::filesystem::path program = CopyFrontEnd();
        std::string bytes = ReadBytes(program);
        const std::string name = from + '\0';
        const std::size_t position = bytes.find(name);
        EXPECT_NE(position, std::string::npos);
        EXPECT_LE(to.size(), from.size());
        bytes.replace(position, name.size(), to + std::string(name.size() - to.size(), '\0'));
        std::ofstream(program, std::ios::binary) << bytes;
        return program;
    }
};

class UncaughtError : public testing::TestWithParam<const wchar_t*> {};

} // namespace

TEST_F(AbnormalEnd, IsAtOnceAndWithoutADialogWhenComCannotBeInitialised) {
    // ReadClassStm answers the null argument with E_INVALIDARG.
    const std::filesystem::path program = WithImportRenamed("CoInitialize", "ReadClassStm");
    for (const wchar_t* arguments : {L"/config x", L""}) {
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(Program(program, arguments, Temporary()).ExitCode(), StatusFatalAppExit);
        EXPECT_LT(GetTickCount64() - start, 5000U);
    }
    EXPECT_FALSE(std::filesystem::exists(Target())) << "nothing may be installed";
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
