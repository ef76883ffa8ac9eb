// Libraries of ours, in places where the front-end must not find them, under the names that others have planted and
// those of the libraries that it loads or looks for in vain. planting.sh traces the latter: it starts these tests
// without any, and then with them.

#include "tests/support/InstallerScreen.h"
#include "tests/support/LabBrowser.h"
#include "tests/support/LabOffice.h"
#include "tests/support/LabOneNote.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"
#include "tests/support/User.h"
#include "tests/support/WaitUntil.h"

#include <commctrl.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace {

/// Wine takes a library of its own before one that lies beside the program, but not with these settings.
constexpr wchar_t WineSettings[] = LR"(Software\Wine\AppDefaults)";
constexpr wchar_t Overrides[] = LR"(Software\Wine\AppDefaults\VellumkitInstaller.x64.exe\DllOverrides)";

/// Under which libraries have been planted beside installers.
constexpr std::wstring_view UsualNames =
    L"apphelp.dll bcrypt.dll clbcatq.dll comctl32.dll cryptbase.dll cryptsp.dll dbghelp.dll dwmapi.dll edputil.dll "
    L"gdiplus.dll iphlpapi.dll mpr.dll msimg32.dll netapi32.dll ntmarta.dll oleacc.dll profapi.dll propsys.dll "
    L"riched20.dll rsaenh.dll secur32.dll shcore.dll shfolder.dll sspicli.dll textshaping.dll urlmon.dll userenv.dll "
    L"usp10.dll uxtheme.dll version.dll windowscodecs.dll wininet.dll winmm.dll winspool.drv wtsapi32.dll";

/// Separated by blanks; empty when there was no trace.
std::wstring TracedNames() {
    const DWORD size = GetEnvironmentVariableW(L"VELLUMKIT_PLANTED", nullptr, 0);
    std::wstring names(size, L'\0');
    names.resize(GetEnvironmentVariableW(L"VELLUMKIT_PLANTED", names.data(), size));
    return names;
}

std::set<std::wstring> AllNames() {
    std::wistringstream stream(std::wstring(UsualNames) + L' ' + TracedNames());
    return {std::istream_iterator<std::wstring, wchar_t>(stream), {}};
}

/// A front-end in a folder of its own, which starts in another one.
class LibraryPlanting : public WindowedMachine, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        WindowedMachine::SetUp();
        for (const char* folder : {"beside", "current"})
            fs::create_directory(Temporary() + fs::path(folder).wstring());
        fs::copy_file(FrontEnd(), Copy());
    }
    void TearDown() override {
        RegDeleteTreeW(HKEY_CURRENT_USER, WineSettings);
        WindowedMachine::TearDown();
    }

    fs::path Copy() const { return fs::path(Temporary()) / "beside" / "VellumkitInstaller.x64.exe"; }
    Program StartCopy(const std::wstring& arguments) const {
        return Program(Copy(), arguments, Temporary(), fs::path(Temporary()) / "current");
    }

    /// In the folder that the test's parameter names.
    void Plant(const std::set<std::wstring>& names) const {
        for (const std::wstring& name : names) {
            fs::copy_file(ProgramFolder() / "planted-library.dll", fs::path(Temporary()) / GetParam() / name);
            const fs::path file = name;
            SetValue(Overrides, (file.extension() == ".dll" ? file.stem() : file).c_str(), REG_SZ,
                     Bytes(L"native,builtin"));
        }
    }

    /// The planted libraries that the program has loaded.
    std::set<fs::path> Loaded() const {
        std::set<fs::path> loaded;
        for (const fs::path& file : fs::directory_iterator(fs::path(Temporary()) / GetParam())) {
            if (file.extension() == ".mark")
                loaded.insert(file.filename());
        }
        return loaded;
    }

    /// Whether this process, which has no defence, finds the library when the folder is its current one.
    bool CanBeLoaded(const wchar_t* name) const {
        const fs::path before = fs::current_path();
        fs::current_path(fs::path(Temporary()) / GetParam());
        const HMODULE library = LoadLibraryW(name);
        fs::current_path(before);
        return library != nullptr && FreeLibrary(library) && !Loaded().empty();
    }

    /// The user reads the help page and goes on.
    static void Answer(const Program& frontEnd) {
        for (const WPARAM button : {102U, 101U}) {
            HWND dialog = nullptr;
            WaitUntil("the question of the front-end", [&] {
                dialog = FindWindowOf(frontEnd, L"#32770");
                return IsWindowVisible(dialog) != FALSE;
            });
            PostMessageW(dialog, TDM_CLICK_BUTTON, button, 0);
            WaitUntil("the end of the question", [&] { return !IsWindow(dialog); });
        }
    }
};

class LibraryPlantingBeside : public LibraryPlanting {};

} // namespace

TEST_P(LibraryPlanting, DoesNotReachAnInstallationWithoutAWindow) {
    Plant(AllNames());
    EXPECT_EQ(StartCopy(L"/config x").ExitCode(), 0U);
    EXPECT_EQ(Loaded(), std::set<fs::path>());
}

TEST_P(LibraryPlanting, DoesNotReachAnInstallationWithAWindow) {
    Plant(AllNames());
    const LabOffice office(L"click-to-run-32-bit");
    const LabBrowser browser(Temporary());
    LabOneNote oneNote(Temporary());
    oneNote.Register();
    const Program frontEnd = StartCopy(L"");
    Answer(frontEnd);
    const InstallerScreen screen(frontEnd);
    screen.Await(ScreenStatus::Completed);
    screen.Activate();
    User::Click(screen.Secondary()); // Start OneNote
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    EXPECT_EQ(Loaded(), std::set<fs::path>());
}

// On a Windows 7, which has no shcore.dll: the front-end of this test looks for one that no Windows has.
TEST_P(LibraryPlanting, DoesNotReachASearchInVain) {
    std::string bytes = ReadBytes(Copy());
    const std::string name("s\0h\0c\0o\0r\0e", 11);
    const std::size_t position = bytes.find(name);
    ASSERT_NE(position, std::string::npos);
    std::ofstream(Copy(), std::ios::binary) << bytes.replace(position, 1, "x");
    Plant({L"xhcore.dll"});
    EXPECT_EQ(StartCopy(L"/config x").ExitCode(), 0U);
    EXPECT_EQ(Loaded(), std::set<fs::path>());
    EXPECT_TRUE(CanBeLoaded(L"xhcore.dll"));
}

// The tests' own proof that Wine loads what is planted: this program has no defence, and the front-end's name. Windows
// can't be brought to it, since it keeps this library ready.
TEST_P(LibraryPlantingBeside, ReachesAnotherProgram) {
    Plant({L"shell32.dll"});
    fs::copy_file(ProgramFolder() / "log-writer.exe", Copy(), fs::copy_options::overwrite_existing);
    StartCopy(L"").ExitCode();
    EXPECT_NE(Loaded(), std::set<fs::path>());
}

INSTANTIATE_TEST_SUITE_P(, LibraryPlantingBeside, testing::Values("beside"));

INSTANTIATE_TEST_SUITE_P(, LibraryPlanting, testing::Values("beside", "current"),
                         [](const auto& item) { return item.param; });
