#pragma once

#include "lab/onenote/Automation.h"

#include <string>
#include <vector>

/// OneNote as a test wants it: which windows there are, and which call fails how. The objects are those of the
/// stand-in, but in the test's own process; registered, `CoCreateInstance` finds them.
class FakeOneNote : public AutomatedOneNote {
public:
    /// A call to a member, and which one, counted from 1. "QueryInterface" is the query for the application's
    /// interface.
    struct Call {
        std::wstring member;
        unsigned occurrence = 1;
    };

    ~FakeOneNote() override;

    /// Serves the application class to this process until the object goes. COM must be initialised.
    void Register();

    /// The open windows, the current one first. A null handle is a null window.
    std::vector<HWND> Windows;
    /// The calls to `NavigateTo` with their arguments, and the window that it opens, if any.
    std::vector<std::wstring> Navigations;
    HWND OpenedByNavigation = nullptr;

    // What one of the calls to come gets, once; each of these replaces the one before.

    /// A failure; a description that is not empty becomes its error information.
    void Fail(const Call& call, HRESULT result, const wchar_t* description = L"");
    /// Null, though it succeeds.
    void GiveNull(const Call& call);

    Outcome OnCall(const std::wstring& member, const std::wstring& arguments) override;
    Outcome OnQueryApplication() override { return OnCall(L"QueryInterface", L""); }
    std::vector<HWND> WindowsByIndex() const override { return Windows; }
    HWND CurrentWindow() const override { return Windows.empty() ? nullptr : Windows.front(); }
    void Navigate(bool inNewWindow) override;

private:
    struct Trouble {
        Call call;
        Outcome outcome;
    };

    Trouble trouble_;
    DWORD registration_ = 0;
};
