#include "checks/TypeLibraryBitness.h"
#include "proof/hostile/HostileRegistry.h"
#include "proof/hostile/HostileText.h"
#include "proof/hostile/Inputs.h"
#include "proof/hostile/LogTail.h"
#include "proof/hostile/Rules.h"
#include "tests/support/Registry.h"
#include "tests/support/TestFolder.h"

#include <algorithm>
#include <fstream>

namespace {

using namespace std::string_view_literals;

constexpr std::wstring_view PathPieces[] = {
    L"C:\\",
    L"Program Files (x86)\\",
    L"Program Files\\",
    L"X86",
    L"x86",
    L"x8",
    L"6",
    L"ONENOTE.EXE",
    L"\\3",
    L"\\3",
    L"\\3\0"sv,
    L"\\1",
    L"\\32",
    L"\\",
    L"3",
    L"\0"sv,
    L".tlb",
    L"C:",
    L"..",
    L"NUL",
    L"*",
    L"?",
    L" ",
    L"%SystemRoot%",
};

constexpr std::wstring_view Endings[] = {L"",     L"\\3", L"\\3\0"sv, L"\\3x", L"\\1",      L"\\32",
                                         L"\0"sv, L"\\",  L" ",       L".",    L"\0\\3\0"sv};

const std::vector<std::wstring> Versions{L"1.0", L"1.1", L"1", L"10.0", L"1.1 ", L"x86"};

bool Opens(const std::wstring& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    CloseHandle(file);
    return true;
}

std::wstring HostilePath(Random& random, const std::wstring& file) {
    if (random.OneIn(3))
        return file + std::wstring(random.Pick(Endings));
    return TextOf(random, PathPieces);
}

std::vector<std::wstring> HostileVersions(Random& random) {
    std::vector<std::wstring> versions;
    for (std::size_t count = random.Below(3); versions.size() < count;) {
        const std::wstring& version = random.Pick(Versions);
        if (std::ranges::count(versions, version) == 0)
            versions.push_back(version);
    }
    return versions;
}

} // namespace

TEST(HostileTypeLibrary, IsReportedAndJudgedAsTheRulesSay) {
    const RegistrySandbox sandbox;
    const TestFolder folder(L" (x86)");
    const std::wstring file = (folder.Path() / L"library.tlb").wstring();
    std::ofstream(folder.Path() / L"library.tlb") << "there";
    LogTail log;
    ForEachInput({.sample = 1'000, .whole = 30'000}, [&log, &file](Random& random) {
        const std::wstring name = HostileText(random);
        const std::wstring identifier = HostileName(random);
        const std::vector<std::wstring> versions = HostileVersions(random);
        std::wstring wanted = versions.empty() ? L"1.1" : random.Pick(versions);
        if (random.OneIn(4))
            wanted = random.OneIn(2) ? wanted + L'\0' : random.Pick(Versions);
        Rules::Registry registry;
        for (const std::wstring& version : versions) {
            const std::size_t times = random.OneIn(2) ? 2 : 6; // many libraries lack most of it
            for (const Rules::Place& place : Rules::PlacesOfLibrary(identifier, version)) {
                if (random.OneIn(times))
                    registry[place] = HostileString(random, HostilePath(random, file));
            }
        }
        Store(HKEY_CLASSES_ROOT, registry);
        const Rules::LibraryReport expected =
            Rules::ReportOfLibrary(name, identifier, versions, wanted, registry, Opens);
        const bool only32Bit = CheckTypeLibraryBitness(name, identifier, versions, wanted);
        log.Expect(expected.entries);
        if (testing::Test::HasFailure() || only32Bit != expected.only32Bit)
            ADD_FAILURE() << Literal(name) << ' ' << Literal(identifier) << ", wanted: " << Literal(wanted) << '\n'
                          << Literal(registry) << "is 32-bit only: " << only32Bit;
    });
}
