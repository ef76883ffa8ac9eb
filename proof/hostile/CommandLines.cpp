#include "app/CommandLine.h"
#include "core/Launch.h"
#include "proof/hostile/HostileText.h"
#include "proof/hostile/Inputs.h"
#include "proof/hostile/Rules.h"

namespace {

using namespace std::string_view_literals;

constexpr std::wstring_view Pieces[] = {
    L"/config", L"/delay", L"/config ", L"/delay ", L" /config \"", L"\"/delay\"", L"/Config", L"/conf\"\"ig",
    L" ",       L" ",      L"\t",       L"\"",      L"\"",          L"\"\"\"",     L"\\",      L"\\\\",
    L"\\\"",    L"C:\\",   L"a b",      L"x",       L"/config\0"sv, L"/configx y", L"/",       L"--config",
};

} // namespace

TEST(HostileCommandLine, GivesTheOptionsThatTheRulesGive) {
    ForEachInput({.sample = 100'000, .whole = 500'000}, [](Random& random) {
        const std::wstring commandLine = Rules::UpToNul(TextOf(random, Pieces));
        ConfigPath.clear();
        DelayOption = false;
        ReadCommandLine(commandLine.c_str());
        const Rules::Options expected = Rules::OptionsOf(commandLine);
        if (ConfigPath != expected.configuration || DelayOption != expected.delay)
            ADD_FAILURE() << Literal(commandLine) << "\ngives " << Literal(ConfigPath) << ' ' << DelayOption << ", not "
                          << Literal(expected.configuration) << ' ' << expected.delay;
    });
}
