// What the installer window tells a screen reader.

#include "ui/Announcement.h"

#include "install/WorkerSignals.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/LogText.h"
#include "tests/support/WindowFixture.h"
#include "ui/InstallerWindow.h"

#include <comdef.h>
#include <oleacc.h>

#include <array>
#include <gtest/gtest.h>
#include <span>
#include <sstream>
#include <utility>
#include <vector>

namespace {

_COM_SMARTPTR_TYPEDEF(IAccessible, __uuidof(IAccessible)); // IID_IAccessible is in two of mingw-w64's libraries

using Calls = std::vector<std::wstring>;

std::wstring TextOf(const GUID& id) {
    std::array<wchar_t, 39> text{};
    StringFromGUID2(id, text.data(), text.size());
    return text.data();
}

/// What is recorded when a text is announced.
Calls Announced(const std::wstring& text) {
    return {L"{C12BCD8E-2A8E-4950-8AE7-3625111D58EB} is 1", L"{608D3DF8-8128-4AA7-A428-F55E49267291} is " + text,
            L"event 8019"};
}

const Calls Forgotten{L"{608D3DF8-8128-4AA7-A428-F55E49267291} is cleared",
                      L"{C12BCD8E-2A8E-4950-8AE7-3625111D58EB} is cleared"};

/// The service, which does nothing but record. Its calls are about the client area of the installer window.
class FakeService : public IAccPropServices {
public:
    Calls Record;
    ULONG References = 0;
    HRESULT SetPropertyResult = S_OK;
    HRESULT SetTextResult = S_OK;
    HRESULT ClearResult = S_OK;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*id*/, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++References; }
    ULONG STDMETHODCALLTYPE Release() override { return --References; }

    HRESULT STDMETHODCALLTYPE SetHwndProp(HWND window, DWORD object, DWORD child, MSAAPROPID id,
                                          VARIANT value) override {
        ExpectClientArea(window, object, child);
        EXPECT_EQ(value.vt, VT_I4);
        Record.push_back(TextOf(id) + L" is " + std::to_wstring(value.lVal));
        return SetPropertyResult;
    }
    HRESULT STDMETHODCALLTYPE SetHwndPropStr(HWND window, DWORD object, DWORD child, MSAAPROPID id,
                                             LPCWSTR text) override {
        ExpectClientArea(window, object, child);
        Record.push_back(TextOf(id) + L" is " + text);
        return SetTextResult;
    }
    HRESULT STDMETHODCALLTYPE ClearHwndProps(HWND window, DWORD object, DWORD child, const MSAAPROPID* ids,
                                             int count) override {
        ExpectClientArea(window, object, child);
        for (const MSAAPROPID& id : std::span(ids, static_cast<std::size_t>(count)))
            Record.push_back(TextOf(id) + L" is cleared");
        return ClearResult;
    }

    static void ExpectClientArea(HWND window, DWORD object, DWORD child) {
        EXPECT_EQ(window, MainWindow);
        EXPECT_TRUE(IsWindow(window));
        EXPECT_EQ(object, static_cast<DWORD>(OBJID_CLIENT));
        EXPECT_EQ(child, static_cast<DWORD>(CHILDID_SELF));
    }

    // Not to be called.

    HRESULT STDMETHODCALLTYPE SetPropValue(const BYTE*, DWORD, MSAAPROPID, VARIANT) override { return Unexpected(); }
    HRESULT STDMETHODCALLTYPE SetPropServer(const BYTE*, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                            AnnoScope) override {
        return Unexpected();
    }
    HRESULT STDMETHODCALLTYPE ClearProps(const BYTE*, DWORD, const MSAAPROPID*, int) override { return Unexpected(); }
    HRESULT STDMETHODCALLTYPE SetHwndPropServer(HWND, DWORD, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                                AnnoScope) override {
        return Unexpected();
    }
    HRESULT STDMETHODCALLTYPE ComposeHwndIdentityString(HWND, DWORD, DWORD, BYTE**, DWORD*) override {
        return Unexpected();
    }
    HRESULT STDMETHODCALLTYPE DecomposeHwndIdentityString(const BYTE*, DWORD, HWND*, DWORD*, DWORD*) override {
        return Unexpected();
    }
    HRESULT STDMETHODCALLTYPE SetHmenuProp(HMENU, DWORD, MSAAPROPID, VARIANT) override { return Unexpected(); }
    HRESULT STDMETHODCALLTYPE SetHmenuPropStr(HMENU, DWORD, MSAAPROPID, LPCWSTR) override { return Unexpected(); }
    HRESULT STDMETHODCALLTYPE SetHmenuPropServer(HMENU, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                                 AnnoScope) override {
        return Unexpected();
    }
    HRESULT STDMETHODCALLTYPE ClearHmenuProps(HMENU, DWORD, const MSAAPROPID*, int) override { return Unexpected(); }
    HRESULT STDMETHODCALLTYPE ComposeHmenuIdentityString(HMENU, DWORD, BYTE**, DWORD*) override { return Unexpected(); }
    HRESULT STDMETHODCALLTYPE DecomposeHmenuIdentityString(const BYTE*, DWORD, HMENU*, DWORD*) override {
        return Unexpected();
    }

private:
    static HRESULT Unexpected() {
        ADD_FAILURE() << "the service is asked for something else";
        return E_NOTIMPL;
    }
};

/// The window, with a service that records what it is told, and with the events.
class Announcement : public WindowFixture {
protected:
    Announcement() {
        Service = {};
        Creation = S_OK;
        GivesNull = false;
        FocusAtEvent = nullptr;
    }

    void TearDown() override {
        WindowFixture::TearDown();
        EXPECT_EQ(Service.References, 0U);
    }

    /// What was recorded since the last question.
    static Calls Recorded() { return std::exchange(Service.Record, {}); }

    static inline FakeService Service;
    static inline HRESULT Creation;
    static inline bool GivesNull; // though it succeeds
    static inline HWND FocusAtEvent;

private:
    static HRESULT WINAPI Create(REFCLSID type, LPUNKNOWN outer, DWORD context, REFIID id, LPVOID* object) {
        EXPECT_EQ(type, CLSID_AccPropServices);
        EXPECT_EQ(outer, nullptr);
        EXPECT_EQ(context, static_cast<DWORD>(CLSCTX_INPROC_SERVER));
        EXPECT_EQ(id, IID_IAccPropServices);
        *object = nullptr;
        if (FAILED(Creation) || GivesNull)
            return Creation;
        Service.AddRef();
        *object = &Service;
        return S_OK;
    }

    static void WINAPI Notify(DWORD event, HWND window, LONG object, LONG child) {
        FakeService::ExpectClientArea(window, static_cast<DWORD>(object), static_cast<DWORD>(child));
        FocusAtEvent = GetFocus();
        std::wostringstream text;
        text << L"event " << std::hex << event;
        Service.Record.push_back(text.str());
    }

    ImportPatch<decltype(CoCreateInstance)> create_{"CoCreateInstance", Create};
    ImportPatch<decltype(NotifyWinEvent)> notify_{"NotifyWinEvent", Notify};
};

struct StateCase {
    const char* name;
    ScreenStatus status;
    const wchar_t* text;
};

class AnnouncedState : public Announcement, public testing::WithParamInterface<StateCase> {};

struct FailureCase {
    const char* name;
    HRESULT creation = S_OK;
    bool givesNull = false;
    HRESULT setProperty = S_OK;
    HRESULT setText = S_OK;
    HRESULT clear = S_OK;
    /// How many calls and events are recorded for a state.
    std::size_t calls = 0;
};

class FailedAnnouncement : public Announcement, public testing::WithParamInterface<FailureCase> {};

/// The service is the one of Windows.
class AccessibleName : public WindowFixture {
protected:
    static std::wstring Get() {
        IAccessiblePtr object;
        EXPECT_EQ(AccessibleObjectFromWindow(MainWindow, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                             reinterpret_cast<void**>(&object)),
                  S_OK);
        _bstr_t name;
        EXPECT_EQ(object->get_accName(_variant_t(long{CHILDID_SELF}), name.GetAddress()), S_OK);
        return {name, name.length()};
    }

    /// Tried on another window: Wine has a service that implements nothing.
    static bool CanBeSet() {
        _com_ptr_t<_com_IIID<IAccPropServices, &IID_IAccPropServices>> service;
        return SUCCEEDED(service.CreateInstance(CLSID_AccPropServices)) &&
               SUCCEEDED(service->SetHwndPropStr(PrimaryButton, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                                                 PROPID_ACC_NAME, L"A name"));
    }
};

} // namespace

TEST_F(Announcement, TellsTheFirstScreenOfAWindowThatIsShown) {
    TearDown();
    Recorded();
    {
        static decltype(&ShowWindow) original;
        original = ImportedNow<decltype(ShowWindow)>("ShowWindow");
        const ImportPatch<decltype(ShowWindow)> show("ShowWindow", [](HWND window, int command) -> BOOL {
            Service.Record.emplace_back(L"shown");
            return original(window, command);
        });
        SetUp();
    }
    Calls expected = Announced(L"Checking requirements...");
    expected.insert(expected.begin(), L"shown");
    EXPECT_EQ(Recorded(), expected);
}

TEST_P(AnnouncedState, IsToldWhenItIsApplied) {
    const ScreenStatus former =
        GetParam().status == ScreenStatus::Completed ? ScreenStatus::Failed : ScreenStatus::Completed;
    SetErrorText(L"Installation failed:  \n\nAccess is denied.\r\n (0x80070005)");
    Show(former);
    Recorded();
    Show(GetParam().status);
    EXPECT_EQ(Recorded(), Announced(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    , AnnouncedState,
    testing::Values(StateCase{"Checking", ScreenStatus::Checking, L"Checking requirements..."},
                    StateCase{"Installing", ScreenStatus::Installing, L"Installing. Please wait..."},
                    StateCase{"Failed", ScreenStatus::Failed, L"Installation failed: Access is denied. (0x80070005)"},
                    StateCase{"Completed", ScreenStatus::Completed,
                              L"Installation of Vellumkit add-in for OneNote is completed."}),
    [](const auto& item) { return item.param.name; });

TEST_F(Announcement, IsReadAfterTheButtonThatGetsTheFocus) {
    Show(ScreenStatus::Failed);
    EXPECT_EQ(FocusAtEvent, PrimaryButton);
    Show(ScreenStatus::Completed);
    EXPECT_EQ(FocusAtEvent, SecondaryButton);
}

TEST_F(Announcement, TellsOfCheckingWhenTheUserRetries) {
    Show(ScreenStatus::Failed);
    Recorded();
    SendClick(PrimaryButton);
    EXPECT_EQ(Recorded(), Announced(L"Checking requirements..."));
}

TEST_F(Announcement, IsNotReadAgainWhenAStateIsAppliedAgain) {
    Show(ScreenStatus::Completed);
    Recorded();
    Show(ScreenStatus::Completed);
    EXPECT_EQ(Recorded(), Calls{});
}

TEST_F(Announcement, IsForgottenBeforeTheWindowIsGone) {
    Recorded();
    DestroyWindow(MainWindow);
    EXPECT_EQ(Recorded(), Forgotten);
}

TEST_F(Announcement, LeavesTheTitleAlone) {
    Show(ScreenStatus::Installing);
    EXPECT_EQ(CaptionOf(MainWindow), L"Vellumkit");
}

TEST_F(Announcement, IsCutWhenItIsLongerThanAnyTextThatFitsTheWindow) {
    Recorded();
    Announce(MainWindow, std::wstring(1023, L'x'));
    EXPECT_EQ(Recorded(), Announced(std::wstring(1023, L'x')));
    Announce(MainWindow, std::wstring(5000, L'x'));
    EXPECT_EQ(Recorded(), Announced(std::wstring(1023, L'x')));
}

TEST_P(FailedAnnouncement, DoesNotDisturbTheWindow) {
    const FailureCase& item = GetParam();
    Creation = item.creation;
    GivesNull = item.givesNull;
    Service.SetPropertyResult = item.setProperty;
    Service.SetTextResult = item.setText;
    Service.ClearResult = item.clear;
    const LoggedEntries logged;
    Recorded();
    Show(ScreenStatus::Completed);
    EXPECT_EQ(Recorded().size(), item.calls);
    EXPECT_EQ(GetFocus(), SecondaryButton);
    SendClick(PrimaryButton);
    EXPECT_FALSE(IsWindow(MainWindow));
    EXPECT_EQ(logged.Get(), Entries{});
}

INSTANTIATE_TEST_SUITE_P(
    , FailedAnnouncement,
    testing::Values(FailureCase{.name = "WithoutTheService", .creation = REGDB_E_CLASSNOTREG},
                    FailureCase{.name = "WithAnEmptyService", .givesNull = true},
                    // The name is announced all the same: Windows 7 does not know a live region.
                    FailureCase{.name = "OfTheLiveRegion", .setProperty = E_INVALIDARG, .calls = 3},
                    FailureCase{.name = "OfTheName", .setText = E_NOTIMPL, .calls = 2}, // and no event
                    FailureCase{.name = "OfItsEnd", .clear = E_OUTOFMEMORY, .calls = 3}),
    [](const auto& item) { return item.param.name; });

TEST_F(AccessibleName, IsWhatIsShownWhereItCanBeSetAndElseTheTitle) {
    const bool canBeSet = CanBeSet();
    EXPECT_EQ(Get(), canBeSet ? L"Checking requirements..." : L"Vellumkit");
    Show(ScreenStatus::Completed);
    EXPECT_EQ(Get(), canBeSet ? L"Installation of Vellumkit add-in for OneNote is completed." : L"Vellumkit");
    EXPECT_EQ(CaptionOf(MainWindow), L"Vellumkit");
}
