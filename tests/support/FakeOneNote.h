#pragma once

#include "install/OneNoteAutomation.h"

#include <optional>
#include <vector>

/// OneNote's automation objects as a test wants them: which windows there are, and which call fails how. The objects
/// are real COM objects on the test's own thread; registered, `CoCreateInstance` finds them.
class FakeOneNote {
public:
    /// The calls that can be made to fail.
    enum class Call { CreateInstance, QueryApplication, Windows, Count, Item, WindowHandle };

    FakeOneNote();
    FakeOneNote(const FakeOneNote&) = delete;
    FakeOneNote& operator=(const FakeOneNote&) = delete;
    ~FakeOneNote();

    /// Serves the application class to this process until the object goes. COM must be initialised.
    void Register();

    /// The class object, without a reference for the caller.
    IClassFactory* Factory();

    /// The open windows. A null handle is a null window.
    std::vector<HWND> Windows;
    /// `Windows` answers S_OK and a null collection.
    bool NullCollection = false;
    /// Asked for its application interface, the object answers S_OK and null.
    bool NullApplication = false;

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
