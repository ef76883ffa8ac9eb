#include "checks/BitnessPrompt.h"

#include "core/Launch.h"
#include "core/Product.h"
#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TaskDialogPatch.h"

#include <shellapi.h>

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace {

/// With a task dialog and a shell that the test answers for: each dialog is closed by the next one of `Answers`.
class BitnessPrompt : public testing::Test {
protected:
    BitnessPrompt() {
        Answers.clear();
        Shown.clear();
        Opened.clear();
        Result = S_OK;
        InstanceHandle = GetModuleHandleW(L"kernel32.dll"); // not the program's own
    }
    ~BitnessPrompt() override { InstanceHandle = nullptr; }

    static inline std::vector<int> Answers;
    struct Dialog {
        TASKDIALOGCONFIG config;
        std::vector<TASKDIALOG_BUTTON> buttons;
    };
    static inline std::vector<Dialog> Shown;
    static inline std::vector<std::wstring> Opened;
    static inline HRESULT Result;

private:
    static HRESULT WINAPI Show(const TASKDIALOGCONFIG* config, int* pressed, int* radio, BOOL* verified) {
        EXPECT_EQ(*pressed, 0);
        EXPECT_EQ(radio, nullptr);
        EXPECT_EQ(verified, nullptr);
        EXPECT_LT(Shown.size(), Answers.size()) << "one dialog too many";
        *pressed = Shown.size() < Answers.size() ? Answers[Shown.size()] : 0;
        Shown.push_back({*config, {config->pButtons, config->pButtons + config->cButtons}});
        return Result;
    }

    static HINSTANCE WINAPI Open(HWND owner, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder, INT show) {
        EXPECT_EQ(owner, nullptr);
        EXPECT_EQ(verb, nullptr);
        EXPECT_EQ(parameters, nullptr);
        EXPECT_EQ(folder, nullptr);
        EXPECT_EQ(show, SW_SHOW);
        Opened.emplace_back(file);
        return nullptr; // out of memory
    }

    TaskDialogPatch dialog_{Show};
    ImportPatch<decltype(ShellExecuteW)> shell_{"ShellExecuteW", Open};
};

const std::vector<std::wstring> Download{std::wstring(L"https://www.vellumkit.example/downloadFile&fv=") +
                                         ProductVersion + L"&file=VellumkitInstaller.x86.exe"};
const std::wstring Help = L"https://www.vellumkit.example/how-to/find-office-bitness";

} // namespace

TEST_F(BitnessPrompt, HasAnInstructionAndThreeCommandLinks) {
    Answers = {101};
    ConfirmBitness();
    ASSERT_EQ(Shown.size(), 1U);
    const auto& [config, buttons] = Shown[0];
    EXPECT_STREQ(config.pszWindowTitle, L"Vellumkit Installer");
    EXPECT_STREQ(config.pszMainInstruction,
                 L"You are installing 64-bit version of Vellumkit, but it appears that you may have 32-bit version of "
                 L"OneNote installed. ");
    ASSERT_EQ(buttons.size(), 3U);
    EXPECT_EQ(buttons[0].nButtonID, 100);
    EXPECT_STREQ(buttons[0].pszButtonText, L"Download 32-bit Vellumkit");
    EXPECT_EQ(buttons[1].nButtonID, 101);
    EXPECT_STREQ(buttons[1].pszButtonText, L"No I have 64-bit OneNote, continue 64-bit installation");
    EXPECT_EQ(buttons[2].nButtonID, 102);
    EXPECT_STREQ(buttons[2].pszButtonText, L"Show me how to find which version of OneNote I have");

    // Every other field.
    TASKDIALOGCONFIG expected{};
    expected.cbSize = sizeof expected;
    expected.hInstance = GetModuleHandleW(L"kernel32.dll");
    expected.dwFlags = 0x11;
    expected.pszWindowTitle = config.pszWindowTitle;
    expected.pszMainIcon = MAKEINTRESOURCEW(100);
    expected.pszMainInstruction = config.pszMainInstruction;
    expected.cButtons = 3;
    expected.pButtons = config.pButtons;
    expected.nDefaultButton = 100;
    EXPECT_EQ(std::memcmp(&config, &expected, sizeof expected), 0);
}

TEST_F(BitnessPrompt, OpensTheDownloadAndEndsWhateverBecomesOfTheBrowser) {
    Answers = {100};
    EXPECT_FALSE(ConfirmBitness());
    EXPECT_EQ(Opened, Download);
}

TEST_F(BitnessPrompt, GoesOnWithThe64BitInstallation) {
    Answers = {101};
    EXPECT_TRUE(ConfirmBitness());
    EXPECT_TRUE(Opened.empty());
}

TEST_F(BitnessPrompt, GoesByTheAnswerAfterAnySuccess) {
    Result = S_FALSE;
    Answers = {100};
    EXPECT_FALSE(ConfirmBitness());
}

TEST_F(BitnessPrompt, GoesOnWhenItIsClosedOtherwise) {
    for (const int answer : {0, IDCANCEL, IDCLOSE, 103}) {
        Answers.push_back(answer);
        EXPECT_TRUE(ConfirmBitness());
    }
    EXPECT_TRUE(Opened.empty());
}

TEST_F(BitnessPrompt, ComesBackWithTheSameDefaultAfterEachHelpPage) {
    Answers = {102, 102, 102, 101};
    EXPECT_TRUE(ConfirmBitness());
    EXPECT_EQ(Opened, (std::vector{Help, Help, Help}));
    ASSERT_EQ(Shown.size(), 4U);
    for (const Dialog& dialog : Shown)
        EXPECT_EQ(static_cast<int>(dialog.config.nDefaultButton), 100);
}

TEST_F(BitnessPrompt, OpensTheDownloadAfterAHelpPage) {
    Answers = {102, 100};
    EXPECT_FALSE(ConfirmBitness());
    EXPECT_EQ(Opened, (std::vector{Help, Download[0]}));
}

TEST_F(BitnessPrompt, ThrowsTheErrorOfADialogThatCannotBeShown) {
    Answers = {100};
    Result = E_OUTOFMEMORY;
    EXPECT_EQ(ThrownBy([] { ConfirmBitness(); }), E_OUTOFMEMORY);
    EXPECT_TRUE(Opened.empty());
}

TEST_F(BitnessPrompt, ThrowsTheErrorOfALibraryThatLacksTheTaskDialog) {
    const ImportPatch<decltype(GetProcAddress)> get("GetProcAddress", [](HMODULE, LPCSTR) -> FARPROC {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    });
    EXPECT_EQ(ThrownBy([] { ConfirmBitness(); }), HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
    EXPECT_TRUE(Opened.empty());
}

TEST_F(BitnessPrompt, ThrowsTheErrorOfALibraryThatCannotBeLoaded) {
    const ImportPatch<decltype(LoadLibraryExW)> load("LoadLibraryExW", [](LPCWSTR, HANDLE, DWORD) -> HMODULE {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    });
    EXPECT_EQ(ThrownBy([] { ConfirmBitness(); }), HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    EXPECT_TRUE(Shown.empty());
}
