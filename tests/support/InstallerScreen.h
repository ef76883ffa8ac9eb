#pragma once

#include "install/ScreenState.h"
#include "tests/support/Program.h"

#include <string>

/// The window of a front-end that a test started, as a person sees it. What it waits for is compared with what this
/// process paints for the same state in its loaded language. Waiting in vain throws, which ends the test.
class InstallerScreen {
public:
    /// Waits for the window.
    explicit InstallerScreen(const Program& frontEnd);

    HWND Window() const { return window_; }
    /// The right button and the left one, found by their places.
    HWND Primary() const { return primary_; }
    HWND Secondary() const { return secondary_; }

    /// Waits until the screen shows that state: its text, and its buttons with their captions, visible and enabled.
    void Await(ScreenStatus status) const;
    /// The same for `Failed`, with what stands under "Installation failed:".
    void AwaitFailure(const std::wstring& errorText) const;

    /// That window of the front-end has the keyboard focus.
    bool HasFocus(HWND window) const;
    void AwaitFocus(HWND window) const;

    /// Brings the window to the front.
    void Activate() const;
    /// Waits until another window is in front.
    void AwaitBackground() const;
    void ClickCaption() const;
    void ClickCloseBox() const;
    /// Waits until there is no window any more.
    void AwaitEnd() const;

    bool IsOpen() const { return IsWindow(window_) != FALSE; }

private:
    bool HasButtons(ScreenStatus status) const;
    /// A point of the frame, on the screen, that is this for the mouse (HTCLOSE, say).
    POINT FindInCaption(LRESULT part) const;

    HWND window_;
    HWND primary_;
    HWND secondary_;
};

/// The caption of a button or the title of a window, also of another process.
std::wstring CaptionOf(HWND button);

/// Which window has the keyboard focus in the thread of a window, also of another process; null for none.
HWND FocusOf(HWND window);
