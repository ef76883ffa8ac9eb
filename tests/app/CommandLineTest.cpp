#include "app/CommandLine.h"

#include "core/Launch.h"
#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"

#include <shellapi.h>

#include <gtest/gtest.h>

namespace {

struct Case {
    const char* name;
    const wchar_t* commandLine;
    const wchar_t* configPath;
    bool delay;
};

// Before any test changes it.
const bool DelayAtStart = DelayOption;
const bool UnattendedAtStart = UnattendedMode;

class CommandLine : public testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        ConfigPath.clear();
        DelayOption = false;
    }
    void TearDown() override { SetUp(); }
};

} // namespace

TEST_F(CommandLine, ThatIsNotReadHoldsNoOption) {
    EXPECT_FALSE(DelayAtStart);
    EXPECT_FALSE(UnattendedAtStart);
}

TEST_P(CommandLine, IsRead) {
    ReadCommandLine(GetParam().commandLine);
    EXPECT_EQ(ConfigPath, GetParam().configPath);
    EXPECT_EQ(DelayOption, GetParam().delay);
}

INSTANTIATE_TEST_SUITE_P(
    , CommandLine,
    testing::Values(Case{"NoArguments", L"", L"", false}, Case{"ASingleArgument", L"/delay", L"", false},
                    Case{"ASingleConfig", L"/config", L"", false},
                    Case{"ConfigWithItsPath", L"/config C:\\lab.ini", L"C:\\lab.ini", false},
                    Case{"APathWithBlanks", L"/config \"C:\\my folder\\lab.ini\"", L"C:\\my folder\\lab.ini", false},
                    Case{"DelayAtTheEndIsIgnored", L"/config C:\\lab.ini /delay", L"C:\\lab.ini", false},
                    Case{"DelayBeforeAnythingElse", L"/delay /config C:\\lab.ini", L"C:\\lab.ini", true},
                    Case{"DelayBeforeAnUnknownArgument", L"/delay x", L"", true},
                    Case{"ConfigAtTheEndIsIgnored", L"x /config", L"", false},
                    Case{"AnEmptyPath", L"/config \"\"", L"", false},
                    Case{"AnEmptyPathBeforeAnotherArgument", L"/config \"\" x", L"", false},
                    Case{"CapitalsAreNoOption", L"/CONFIG C:\\lab.ini", L"", false},
                    Case{"ALongerWordIsNoOption", L"/config2 /delayed x", L"", false},
                    Case{"ADashIsNoOption", L"-config C:\\lab.ini", L"", false},
                    Case{"ConfigsArgumentDelayAtTheEnd", L"/config /delay", L"/delay", false},
                    Case{"ConfigsArgumentIsItselfAnOption", L"/config /delay x", L"/delay", true},
                    Case{"ConfigsArgumentIsConfig", L"/config /config x", L"x", false},
                    Case{"TheLastConfigWins", L"/config first /config second", L"second", false},
                    Case{"ALaterEmptyConfigWinsToo", L"/config first /config \"\"", L"", false}),
    [](const auto& item) { return item.param.name; });

TEST_F(CommandLine, ThatCannotBeSplitIsAnErrorAndHoldsNoOption) {
    const ImportPatch<decltype(CommandLineToArgvW)> split("CommandLineToArgvW", [](LPCWSTR, int* count) -> LPWSTR* {
        *count = 2;
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    });
    EXPECT_EQ(ThrownBy([] { ReadCommandLine(L"/config C:\\lab.ini"); }), HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_EQ(ConfigPath, L"");
}
