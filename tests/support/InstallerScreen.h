#pragma once

#include "tests/support/Picture.h"
#include "tests/support/Program.h"
#include "ui/ScreenState.h"

#include <string>

/// The window of a front-end that a test started, as a person sees it. What it waits for is compared with what this
/// process paints for the same state in its loaded language.
class InstallerScreen {
public:
    /// Waits for the window.
    explicit InstallerScreen(const Program& frontEnd);

    HWND Window() const { return window_; }
    /// The right button and the left one, found by their places.
    HWND Primary() const { return primary_; }
    HWND Secondary() const { return secondary_; }

    /// Waits until the screen shows that state, its text and its buttons.
    void Await(ScreenStatus status) const;
    /// The same for `Failed`, with what stands under "Installation failed:".
    void AwaitFailure(const std::wstring& errorText) const;

    /// Waits until that window of the front-end has the keyboard focus.
    void AwaitFocus(HWND window) const;

    /// Brings the window to the front.
    void Activate() const;
    /// Clicks the close box.
    void ClickCloseBox() const;
    /// Waits until there is no window any more.
    void AwaitEnd() const;

    bool IsOpen() const { return IsWindow(window_) != FALSE; }

private:
    bool Shows(ScreenStatus status, const Picture& painted) const;

    HWND window_;
    HWND primary_;
    HWND secondary_;
};

/// The caption of another process's button.
std::wstring CaptionOf(HWND button);
