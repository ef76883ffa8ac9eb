#include "checks/ComRegistrationReport.h"
#include "checks/RegistryReport.h"
#include "proof/hostile/HostileRegistry.h"
#include "proof/hostile/HostileText.h"
#include "proof/hostile/Inputs.h"
#include "proof/hostile/LogTail.h"
#include "proof/hostile/Rules.h"
#include "tests/support/Registry.h"

TEST(HostileRegistryValue, IsReportedAsTheRulesSay) {
    const RegistrySandbox sandbox;
    LogTail log;
    ForEachInput({.sample = 4'000, .whole = 100'000}, [&log](Random& random) {
        const bool ofUser = random.OneIn(2);
        const HKEY root = ofUser ? HKEY_CURRENT_USER : HKEY_CLASSES_ROOT;
        const Rules::Place place{HostileName(random), random.OneIn(2) ? L"" : HostileName(random)};
        const std::wstring title = HostileText(random);
        Rules::Registry registry;
        if (!random.OneIn(20))
            registry[place] = random.OneIn(2) ? HostileValue(random) : HostileString(random, HostileText(random));
        Store(root, registry);
        const wchar_t* const name = place.name.empty() ? nullptr : place.name.c_str();
        WriteRegistryReport(title, {{.root = root, .subkey = place.key, .valueName = name}});
        log.Expect(Rules::Block(title, ofUser ? L"HKCU" : L"HKCR", {place}, registry));
        if (testing::Test::HasFailure())
            ADD_FAILURE() << Literal(title) << '\n' << Literal(registry);
    });
}

TEST(HostileInterface, IsReportedAndHasTheVersionThatTheRulesSay) {
    const RegistrySandbox sandbox;
    LogTail log;
    ForEachInput({.sample = 1'000, .whole = 20'000}, [&log](Random& random) {
        const std::wstring name = HostileText(random);
        const std::wstring identifier = HostileName(random);
        const std::vector<Rules::Place> places = Rules::PlacesOfInterface(identifier);
        Rules::Registry registry;
        for (const Rules::Place& place : places) {
            if (random.OneIn(3))
                registry[place] = random.OneIn(2) ? HostileValue(random) : HostileString(random, HostileText(random));
        }
        Store(HKEY_CLASSES_ROOT, registry);
        const std::wstring version = ReportInterface(name, identifier);
        log.Expect(Rules::Block(L"IID for " + name, L"HKCR", places, registry));
        if (testing::Test::HasFailure() || version != Rules::LibraryVersion(identifier, registry))
            ADD_FAILURE() << Literal(name) << ' ' << Literal(identifier) << '\n'
                          << Literal(registry) << "has the version " << Literal(version);
    });
}
