#pragma once

#include "core/Unique.h"
#include "install/ScreenState.h"
#include "tests/support/ComApartment.h"

#include <gtest/gtest.h>

/// The installer window in the test's own process, on its own thread, in English. `MainWindow` and the buttons are
/// there from the test's beginning to its end.
class WindowFixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Posts a state and lets the window apply it.
    static void Show(ScreenStatus status);

    /// Sends what a button sends when it is clicked.
    static void SendClick(HWND button, WORD notification = BN_CLICKED, WORD id = 0);

    /// The worker was told to continue since the last question.
    bool WorkerContinues() const { return WaitForSingleObject(continue_.Get(), 0) == WAIT_OBJECT_0; }

    /// Expects that the screen shows, above the buttons, what `RenderScreen` paints for that status. What was drawn may
    /// reach it late: waits up to half a minute.
    static void ExpectOnScreen(ScreenStatus status);

private:
    ComApartment apartment_;
    UniqueHandle continue_;
};
