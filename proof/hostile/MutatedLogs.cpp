#include "proof/hostile/HostileText.h"
#include "proof/hostile/Inputs.h"
#include "support/Output.h"
#include "tests/support/SampleLog.h"

#include <algorithm>
#include <array>

namespace {

/// Logs of every verdict.
std::vector<std::string> Logs() {
    SampleLog failed = SampleLog().WriteReport(L"", L"office-2010").Write(SampleSearch());
    failed.Write({L"ERROR: Instalace se nezdařila:\n\nx (0x80070005)", L"Waiting for a signal"});
    SampleLog retried =
        SampleLog(failed).Write({L"Begin processing", L"Checking if OneNote is running", L"Found process 'onenote.exe'",
                                 L"OneNote is still running. Waiting...",
                                 L"State: Installing - OneNote is not running, continuing with install"});
    retried.Write(SampleExtraction()).Write(SampleRepairs()).Write(SampleProtocols());
    retried.Write({L"Waiting for a signal", L"Starting OneNote", L"Started OneNote",
                   L"Exit signalled, returning from background process"});
    std::vector<std::string> logs;
    for (const SampleLog& log :
         {SampleLog().WriteReport(L"/config x").WriteInstallation(), SampleLog().WriteReport(L"", L"x86-in-paths"),
          SampleLog().WriteReport(L"", L"existing-files").WriteInstallation(), failed, retried})
        logs.push_back(Utf16Bytes(log.Text()));
    return logs;
}

/// A place in the log, most often between two characters, and more often near the end, where most is told.
std::size_t Place(Random& random, const std::string& log) {
    const std::size_t tail = std::min<std::size_t>(log.size(), 6000);
    const std::size_t place = random.OneIn(2) ? log.size() - random.Below(tail + 1) : random.Below(log.size() + 1);
    return random.OneIn(4) ? place : place & ~std::size_t{1};
}

std::string Piece(Random& random, const std::string& log) {
    const std::size_t place = Place(random, log);
    return log.substr(place, random.Below(random.OneIn(8) ? 5000 : 300));
}

void Mutate(Random& random, std::string& log, const std::string& other) {
    const std::size_t place = Place(random, log);
    switch (random.Below(8)) {
    case 0:
        log.resize(place);
        break;
    case 1:
        log.erase(0, place);
        break;
    case 2:
        log.erase(place, random.Below(400));
        break;
    case 3:
        log.insert(place, Piece(random, log));
        break;
    case 4:
        log.insert(place, Piece(random, other));
        break;
    case 5:
        log.insert(place, Utf16Bytes(HostileText(random)));
        break;
    case 6:
        log += other;
        break;
    default:
        if (place < log.size())
            log[place] = static_cast<char>(random.Next());
        break;
    }
}

std::wstring Told(const Findings& findings) {
    return OutputOf(Format::Json, L"x.log", findings, true) + OutputOf(Format::Page, L"x.log", findings, true);
}

} // namespace

// An input is the log of a run that has failed, on a machine where somebody has written entries of a log, any ones,
// into a string of the registry that the installer reports.
TEST(HostileLogs, OfAFailureAreNotTakenForASuccess) {
    constexpr std::wstring_view Time = L"\r\nSat Nov 21 21:14:33 2026 - ";
    constexpr std::wstring_view Missing = L" - Not found";
    const SampleLog failed = SampleLog()
                                 .WriteReport(L"/config x", L"office-64-bit")
                                 .Write(SampleSearch())
                                 .Write(SampleExtraction())
                                 .Write(SampleRepairs())
                                 .Write({L"Internet Security Settings", L"    HKCU\\x - Not found", L"",
                                         L"ERROR: Installation failed:\n\nx (0x5)"});
    Entries entries = Joined({SampleSearch(), SampleExtraction(), SampleRepairs(), SampleProtocols()});
    for (const LogRule& rule : LogRules())
        entries.emplace_back(rule.text);
    ForEachInput({.sample = 5'000, .whole = 200'000}, [&](Random& random) {
        std::wstring log = failed.Text();
        std::size_t place = log.find(Missing);
        for (std::size_t skipped = random.Below(100); skipped != 0 && place != std::wstring::npos; --skipped)
            place = log.find(Missing, place + 1);
        if (place == std::wstring::npos)
            place = log.rfind(Missing);
        std::wstring value = random.OneIn(2) ? L" - x" : L" - x (String)";
        std::size_t first = random.Below(entries.size());
        for (std::size_t count = 1 + random.Below(60); count != 0; --count) {
            first = random.OneIn(8) ? random.Below(entries.size()) : (first + 1) % entries.size();
            value.append(Time).append(entries[first]);
        }
        log.replace(place, Missing.size(), value + L" (String)");
        const Findings findings = ReadLogBytes(Utf16Bytes(log));
        if (findings.verdict == Verdict::Installed)
            ADD_FAILURE() << Literal(value);
    });
}

// An input is a log of which pieces were lost, doubled, mixed with those of another one or of anything.
TEST(HostileLogs, AreReadToTheEndAndAlikeInPiecesOfAnySize) {
    const std::vector<std::string> logs = Logs();
    ForEachInput({.sample = 1'000, .whole = 200'000}, [&logs](Random& random) {
        std::string log = random.Pick(logs);
        for (std::size_t times = 1 + random.Below(4); times != 0; --times)
            Mutate(random, log, random.Pick(logs));
        const Findings findings = ReadLogBytes(log, log.size() + 1);
        EXPECT_EQ(Told(findings), Told(ReadLogBytes(log, 1 + random.Below(10'000))));
        EXPECT_LE(findings.notes.size() + findings.terminated.size() + findings.repaired.size(), 60U);
    });
}
