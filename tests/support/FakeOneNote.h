#pragma once

#include "install/OneNoteAutomation.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// OneNote's automation objects as a test wants them: which windows there are, and which call fails how. The objects
/// are real COM objects on the test's own thread; registered, `CoCreateInstance` finds them.
class FakeOneNote {
public:
    /// The calls that can be made to fail. `WindowsAgain` is the application's second `Windows`.
    enum class Call {
        CreateInstance,
        QueryApplication,
        Windows,
        WindowsAgain,
        Count,
        Item,
        CurrentWindow,
        WindowHandle,
        NavigateTo,
    };

    /// The arguments of `NavigateTo`. A null string is none.
    struct Navigation {
        std::optional<std::wstring> hierarchyObjectId;
        std::optional<std::wstring> objectId;
        VARIANT_BOOL newWindow = VARIANT_FALSE;
        bool operator==(const Navigation&) const = default;
        friend std::ostream& operator<<(std::ostream& stream, const Navigation& navigation);
    };

    FakeOneNote();
    FakeOneNote(const FakeOneNote&) = delete;
    FakeOneNote& operator=(const FakeOneNote&) = delete;
    ~FakeOneNote();

    /// Serves the application class to this process until the object goes. COM must be initialised.
    void Register();

    /// The open windows, the current one first. A null handle is a null window.
    std::vector<HWND> Windows;
    /// What `NavigateTo` was called with, and the window that it opens, if any.
    std::vector<Navigation> Navigations;
    HWND OpenedByNavigation = nullptr;
    /// The call that answers S_OK and null instead of an application or a collection.
    std::optional<Call> Null;

    /// Makes a call fail, `Item` for the last window only; with a description, it sets that as its error information.
    void Fail(Call call, HRESULT result, const wchar_t* description = nullptr);

    /// S_OK, or what `Fail` asked for, with the error information set.
    HRESULT Answer(Call call) const;

    /// References that clients hold, over all objects.
    int References = 0;

private:
    struct Failure {
        Call call;
        HRESULT result;
        const wchar_t* description;
    };

    std::optional<Failure> failure_;
    IClassFactory* factory_ = nullptr;
    DWORD registration_ = 0;
};
