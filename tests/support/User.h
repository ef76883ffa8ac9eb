#pragma once

#include "tests/support/Picture.h"

#include <windows.h>

#include <initializer_list>
#include <thread>

/// What a person in front of the machine does and sees: keys and mouse as the system's input (SendInput), and the
/// screen.
namespace User {

/// Presses the keys (VK_...) one after the other, then releases them in the reverse order: {VK_MENU, 'C'} is Alt+C.
void Press(std::initializer_list<WORD> keys);

/// Moves the mouse to a point of the screen, in pixels, and presses or releases its left button there.
void MouseDown(POINT where);
void MouseUp(POINT where);

/// Clicks there, or into the middle of a window.
void Click(POINT where);
void Click(HWND window);

/// The middle of a window, in pixels of the screen.
POINT MiddleOf(HWND window);

/// A window's client area as the screen shows it now.
Picture LookAt(HWND window);

/// Presses OK in every message box that comes up, of any program, as long as it lives.
class ConfirmedBoxes {
public:
    ConfirmedBoxes();
    ConfirmedBoxes(const ConfirmedBoxes&) = delete;
    ConfirmedBoxes& operator=(const ConfirmedBoxes&) = delete;
    ~ConfirmedBoxes() = default;

private:
    std::jthread user_;
};

} // namespace User
