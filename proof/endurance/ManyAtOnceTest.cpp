#include "proof/Extent.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Machine.h"
#include "tests/support/Watchdog.h"

#include <fstream>
#include <iostream>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace {

constexpr std::wstring_view LogName = L"Vellumkit_Install.log";

class ManyAtOnce : public Machine {
protected:
    /// A front-end that writes a log of its own: the one that all others empty when they start can tell nothing.
    struct FrontEnd {
        fs::path file;
        fs::path log;
    };

    FrontEnd Make(int number) const {
        std::wstring digits = std::to_wstring(number);
        digits.insert(0, 7 - digits.size(), L'0'); // as long as what it stands for
        const std::wstring log = L"Vellumkit_" + digits + L".log";
        FrontEnd made{fs::path(Temporary()) / (digits + L".exe"), fs::path(Temporary()) / log};
        std::string bytes = program_;
        const std::size_t name = bytes.find(AsBytes(LogName));
        EXPECT_NE(name, std::string::npos);
        bytes.replace(name, LogName.size() * sizeof(wchar_t), AsBytes(log));
        std::ofstream(made.file, std::ios::binary) << bytes;
        return made;
    }

private:
    static std::string AsBytes(std::wstring_view text) {
        return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
    }

    std::string program_ = ReadBytes(Machine::FrontEnd());
};

/// Waits for its end and answers what the shell says meanwhile: what keeps it from starting a program it tells the user
/// in a box of its own, also when there is no window. Returns the number of boxes.
std::size_t AwaitEnd(const Program& frontEnd) {
    std::set<HWND> boxes;
    while (frontEnd.IsRunning()) {
        if (const HWND box = FindWindowOf(frontEnd, L"#32770"); box != nullptr) {
            boxes.insert(box);
            PostMessageW(box, WM_COMMAND, IDOK, 0);
        }
        Sleep(50);
    }
    return boxes.size();
}

} // namespace

// The stand-in for the elevated installer reports a failure when its own file is damaged, and is asked for none.
TEST_F(ManyAtOnce, EndInSuccessOrFailureAndRunNoDamagedPayload) {
    const std::wstring arguments = L"/config \"" + Configuration(L"0") + L'"';
    std::vector<FrontEnd> frontEnds;
    for (int number = Extent{.sample = 12, .whole = 200}.Count(); number > 0; --number)
        frontEnds.push_back(Make(number));
    Watchdog::Allow(60 + 5 * static_cast<unsigned>(frontEnds.size()));
    std::vector<Program> programs;
    programs.reserve(frontEnds.size());
    for (const FrontEnd& frontEnd : frontEnds)
        programs.emplace_back(frontEnd.file, arguments, Temporary());

    std::map<std::wstring, int> ends;
    std::size_t boxes = 0;
    for (std::size_t index = 0; index < programs.size(); ++index) {
        boxes += AwaitEnd(programs[index]);
        const DWORD exitCode = programs[index].ExitCode();
        const Entries log = ReadEntries(frontEnds[index].log);
        ASSERT_FALSE(log.empty());
        ++ends[log.back()];
        EXPECT_EQ(exitCode, log.back() == L"State: Complete" ? 0U : 1U) << testing::PrintToString(log.back());
        for (const std::wstring& entry : log)
            EXPECT_FALSE(entry.starts_with(L"ERROR: Installer reported failure")) << testing::PrintToString(entry);
    }
    EXPECT_GT(ends[L"State: Complete"], 0);
    for (const auto& [last, count] : ends)
        std::cout << count << " ended with " << testing::PrintToString(last) << '\n';
    std::cout << "Boxes of the shell: " << boxes << std::endl;
    EXPECT_EQ(ReadBytes(Target()), ReadBytes(ElevatedInstaller()));
}
