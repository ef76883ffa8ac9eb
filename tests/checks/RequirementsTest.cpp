#include "checks/Requirements.h"

#include "core/Launch.h"
#include "core/Product.h"
#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Registry.h"
#include "tests/support/TaskDialogPatch.h"

#include <shellapi.h>

#include <algorithm>
#include <gtest/gtest.h>

namespace {

/// With a task dialog in which the user presses "Download", and a browser that is not there.
class Requirements : public LoggedRegistry {
protected:
    Requirements() {
        Dialogs = 0;
        DialogResult = S_OK;
    }
    ~Requirements() override {
        UnattendedMode = false;
        CommandLineText.clear();
    }

    static void RegisterOneNote(const wchar_t* file) {
        RegisterText(L"Interface\\{452AC71A-B655-4967-A208-A4CC39DD7949}\\TypeLib", L"Version", L"1.1");
        RegisterText(L"TypeLib\\{0EA692EE-BB50-4E3C-AEF0-356D91732725}\\1.1\\0\\Win32", nullptr, file);
    }
    static void RegisterOffice(const wchar_t* file) {
        RegisterText(L"Interface\\{000C0396-0000-0000-C000-000000000046}\\TypeLib", L"Version", L"2.7");
        RegisterText(L"TypeLib\\{2DF8D04C-5BFA-101B-BDE5-00AA0044DE52}\\2.7\\0\\Win32", nullptr, file);
    }

    static inline int Dialogs;
    static inline HRESULT DialogResult;

private:
    static HRESULT WINAPI PressDownload(const TASKDIALOGCONFIG* /*config*/, int* pressed, int* /*radio*/,
                                        BOOL* /*verified*/) {
        ++Dialogs;
        *pressed = 100;
        return DialogResult;
    }

    TaskDialogPatch dialog_{PressDownload};
    ImportPatch<decltype(ShellExecuteW)> shell_{
        "ShellExecuteW", [](HWND, LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR, INT) -> HINSTANCE { return nullptr; }};
};

constexpr wchar_t X86File[] = L"C:\\x86\\a.dll";
constexpr wchar_t PlainFile[] = L"C:\\a.dll";

} // namespace

TEST_F(Requirements, AreReportedBehindAHeadOfSixEntries) {
    CommandLineText = L" /config  \"a b\" \"\"";
    EXPECT_TRUE(CheckRequirements());
    Entries log = Logged();
    ASSERT_GT(log.size(), 7U);
    log.resize(7);
    EXPECT_EQ(log, (Entries{L"Running 64-bit Installer on 64-bit Windows", std::wstring(L"Version ") + ProductVersion,
                            L"Command line:  /config  \"a b\" \"\"", L"", L"Registry keys on the client:", L"",
                            L"ProgId for OneNote.Application"}));
}

TEST_F(Requirements, AskWhetherTheProcessIsEmulatedAndDoNotCare) {
    static int calls;
    calls = 0;
    const ImportPatch<decltype(IsWow64Process)> emulated("IsWow64Process", [](HANDLE process, PBOOL flag) -> BOOL {
        EXPECT_EQ(process, GetCurrentProcess());
        ++calls;
        *flag = TRUE;
        return TRUE;
    });
    EXPECT_TRUE(CheckRequirements());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(Logged()[0], L"Running 64-bit Installer on 64-bit Windows");
}

TEST_F(Requirements, AreReportedInSixteenBlocks) {
    EXPECT_TRUE(CheckRequirements());
    Entries titles = Logged();
    std::erase_if(titles, [](const std::wstring& entry) { return entry.find(L" for ") == std::wstring::npos; });
    EXPECT_EQ(titles, (Entries{
                          L"ProgId for OneNote.Application",
                          L"CLSID for OneNote.Application.14",
                          L"CLSID for OneNote.Application.15",
                          L"IID for OneNote.IApplication",
                          L"Type library for OneNote.IApplication version 1.0",
                          L"Type library for OneNote.IApplication version 1.1",
                          L"CLSID for ProxyStub for General OLE Automation",
                          L"IID for _IDTExtensibility2",
                          L"Type library for _IDTExtensibility2 version 1.0",
                          L"IID for IRibbonExtensibility",
                          L"IID for IRibbonControl",
                          L"IID for IRibbonUI",
                          L"Type library for IRibbonExtensibility version 2.5",
                          L"Type library for IRibbonExtensibility version 2.6",
                          L"Type library for IRibbonExtensibility version 2.7",
                          L"Type library for IRibbonExtensibility version 2.8",
                      }));
}

TEST_F(Requirements, OfAMachineWithoutOneNoteAreMetWithoutAQuestion) {
    EXPECT_TRUE(CheckRequirements());
    EXPECT_EQ(Dialogs, 0);
    for (const std::wstring& entry : Logged())
        EXPECT_EQ(entry.starts_with(L"    "), entry.ends_with(L" - Not found")) << testing::PrintToString(entry);
}

TEST_F(Requirements, AreInQuestionWhenOneNoteIsRegisteredFor32BitOnly) {
    RegisterOneNote(X86File);
    EXPECT_FALSE(CheckRequirements());
    EXPECT_EQ(Dialogs, 1);
}

TEST_F(Requirements, AreInQuestionWhenOfficeIsRegisteredFor32BitOnly) {
    RegisterOneNote(PlainFile);
    RegisterOffice(X86File);
    EXPECT_FALSE(CheckRequirements());
    EXPECT_EQ(Dialogs, 1);
}

TEST_F(Requirements, AreReportedToTheEndBeforeTheQuestion) {
    RegisterOneNote(X86File);
    RegisterOffice(PlainFile);
    EXPECT_FALSE(CheckRequirements());
    EXPECT_EQ(Dialogs, 1);
    EXPECT_EQ(std::ranges::count(Logged(), L"Result: x86 detected"), 1);
    EXPECT_EQ(std::ranges::count(Logged(), L"Result: x64 detected"), 1);
    EXPECT_EQ(std::ranges::count(Logged(), L"Type library for IRibbonExtensibility version 2.8"), 1);
}

TEST_F(Requirements, AreMetWhenNeitherIsRegisteredFor32BitOnly) {
    RegisterOneNote(PlainFile);
    RegisterOffice(PlainFile);
    EXPECT_TRUE(CheckRequirements());
    EXPECT_EQ(Dialogs, 0);
}

TEST_F(Requirements, IgnoreTheAddinInterfacesLibrary) {
    RegisterText(L"Interface\\{B65AD801-ABAF-11D0-BB8B-00A0C90F2744}\\TypeLib", L"Version", L"1.0");
    RegisterText(L"TypeLib\\{AC0714F2-3D04-11D1-AE7D-00A0C90F26F4}\\1.0\\0\\Win32", nullptr, X86File);
    EXPECT_TRUE(CheckRequirements());
    EXPECT_EQ(Dialogs, 0);
    EXPECT_EQ(std::ranges::count(Logged(), L"Checking bitness for this type library"), 0);
}

TEST_F(Requirements, AreNeverInQuestionInUnattendedMode) {
    UnattendedMode = true;
    RegisterOneNote(X86File);
    RegisterOffice(X86File);
    EXPECT_TRUE(CheckRequirements());
    EXPECT_EQ(Dialogs, 0);
    EXPECT_EQ(std::ranges::count(Logged(), L"Result: x86 detected"), 2);
}

TEST_F(Requirements, ThrowTheErrorOfAQuestionThatCannotBeAsked) {
    RegisterOneNote(X86File);
    DialogResult = E_FAIL;
    EXPECT_EQ(ThrownBy([] { CheckRequirements(); }), E_FAIL);
}
