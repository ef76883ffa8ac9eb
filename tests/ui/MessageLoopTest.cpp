#include "install/WorkerSignals.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/WindowFixture.h"
#include "ui/InstallerWindow.h"

#include <string>
#include <vector>

namespace {

class MessageLoop : public WindowFixture {};

} // namespace

TEST_F(MessageLoop, EndsWithTheExitCodeOfQuit) {
    PostQuitMessage(23);
    EXPECT_EQ(RunMessageLoop(), 23);
}

TEST_F(MessageLoop, EndsWithZeroWhenItIsClosed) {
    PostMessageW(MainWindow, WM_CLOSE, 0, 0);
    EXPECT_EQ(RunMessageLoop(), 0);
    EXPECT_FALSE(IsWindow(MainWindow));
}

TEST_F(MessageLoop, GoesOnAfterAFailure) {
    static int calls;
    calls = 0;
    const ImportPatch<decltype(GetMessageW)> get("GetMessageW", [](MSG* message, HWND window, UINT, UINT) -> BOOL {
        EXPECT_EQ(window, nullptr);
        *message = {};
        message->wParam = 5;
        return ++calls == 1 ? -1 : 0;
    });
    EXPECT_EQ(RunMessageLoop(), 5);
    EXPECT_EQ(calls, 2);
}

TEST_F(MessageLoop, TranslatesAndDispatchesOnlyWhatIsNoDialogKey) {
    using Calls = std::vector<std::string>;
    static Calls calls;
    static bool isDialogKey;
    const ImportPatch<decltype(IsDialogMessageW)> test("IsDialogMessageW", [](HWND window, MSG*) -> BOOL {
        EXPECT_EQ(window, MainWindow);
        return isDialogKey;
    });
    const ImportPatch<decltype(TranslateMessage)> translate("TranslateMessage", [](const MSG* message) -> BOOL {
        if (message->message == WM_APP)
            calls.emplace_back("translate");
        return FALSE;
    });
    const ImportPatch<decltype(DispatchMessageW)> dispatch("DispatchMessageW", [](const MSG* message) -> LRESULT {
        if (message->message == WM_APP)
            calls.emplace_back("dispatch");
        return 0;
    });
    for (const bool key : {true, false}) {
        isDialogKey = key;
        calls.clear();
        PostMessageW(MainWindow, WM_APP, 0, 0);
        PostQuitMessage(0);
        RunMessageLoop();
        EXPECT_EQ(calls, key ? Calls{} : (Calls{"translate", "dispatch"}));
    }
}
