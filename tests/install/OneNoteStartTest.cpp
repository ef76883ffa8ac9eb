#include "install/OneNoteStart.h"

#include "core/ComError.h"
#include "install/OneNoteAutomation.h"
#include "tests/support/ComApartment.h"
#include "tests/support/FakeOneNote.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogText.h"

#include <gtest/gtest.h>

namespace {

using Call = FakeOneNote::Call;
using Handles = std::vector<HWND>;

// Handles that need more than 32 bits.
const HWND Current = reinterpret_cast<HWND>(0x1234567890);
const HWND Other = reinterpret_cast<HWND>(0x2345678901);

/// Records who may take the foreground and what is brought there. Both calls fail, which nobody checks.
class OneNoteStart : public testing::Test {
protected:
    void SetUp() override {
        Allowed = 0;
        InFront.clear();
        SetErrorInfo(0, nullptr); // what another test left
    }
    /// No interface may be kept by the code under test.
    void TearDown() override { EXPECT_EQ(oneNote_.References(), 0); }

    Entries Logged() const { return log_.Get(); }

    static Entries LogOfFailure(const std::wstring& text) {
        return {L"Starting OneNote", L"ERROR: Failed to start OneNote: " + text};
    }
    /// Of an error without a description.
    static Entries LogOfFailure(HRESULT result) { return LogOfFailure(ComErrorText(_com_error(result))); }

    FakeOneNote oneNote_;
    static inline int Allowed;
    static inline Handles InFront;

private:
    static HRESULT WINAPI Allow(IUnknown* object, LPVOID reserved) {
        OneNoteApplicationPtr application;
        EXPECT_EQ(object->QueryInterface(IID_IApplication, reinterpret_cast<void**>(&application)), S_OK);
        EXPECT_EQ(reserved, nullptr);
        EXPECT_TRUE(InFront.empty()) << "too late";
        ++Allowed;
        return E_ACCESSDENIED;
    }

    LoggedEntries log_;
    ComApartment apartment_;
    ImportPatch<decltype(CoAllowSetForegroundWindow)> allow_{"CoAllowSetForegroundWindow", Allow};
    ImportPatch<decltype(SetForegroundWindow)> front_{"SetForegroundWindow", [](HWND window) -> BOOL {
                                                          InFront.push_back(window);
                                                          return FALSE;
                                                      }};
};

class RegisteredOneNoteStart : public OneNoteStart {
protected:
    void SetUp() override {
        OneNoteStart::SetUp();
        oneNote_.Register();
    }
};

const Entries LogOfSuccess{L"Starting OneNote", L"Started OneNote"};

/// A step that fails, and whether OneNote has been allowed to take the foreground by then.
struct Step {
    const char* name;
    Call call;
    bool allowed = false;
};

class OneNoteStartStep : public RegisteredOneNoteStart, public testing::WithParamInterface<Step> {
protected:
    /// Every step takes place.
    void SetUp() override {
        RegisteredOneNoteStart::SetUp();
        oneNote_.OpenedByNavigation = Current;
    }
};

class OneNoteStartConnection : public OneNoteStartStep {};
class OneNoteStartCall : public OneNoteStartStep {};
class OneNoteStartNull : public OneNoteStartStep {};

const auto NameOfStep = [](const auto& item) { return item.param.name; };

} // namespace

TEST_F(RegisteredOneNoteStart, OpensAWindowWhenThereIsNoneAndBringsItToTheFront) {
    oneNote_.OpenedByNavigation = Current;
    StartOneNote();
    EXPECT_EQ(oneNote_.Navigations, Entries{LR"(NavigateTo("", "", -1))"});
    EXPECT_EQ(Allowed, 1);
    EXPECT_EQ(InFront, Handles{Current});
    EXPECT_EQ(Logged(), LogOfSuccess);
}

TEST_F(RegisteredOneNoteStart, BringsTheCurrentWindowToTheFrontAndOpensNone) {
    oneNote_.Windows = {Current, Other};
    StartOneNote();
    EXPECT_EQ(oneNote_.Navigations, Entries{});
    EXPECT_EQ(Allowed, 1);
    EXPECT_EQ(InFront, Handles{Current});
    EXPECT_EQ(Logged(), LogOfSuccess);
}

TEST_F(RegisteredOneNoteStart, OpensNoSecondWindow) {
    oneNote_.Windows = {Current};
    StartOneNote();
    EXPECT_EQ(oneNote_.Navigations, Entries{});
    EXPECT_EQ(InFront, Handles{Current});
}

TEST_F(OneNoteStart, IsLoggedAsFailedWhereOneNoteIsNotRegistered) {
    StartOneNote();
    EXPECT_EQ(Logged(), LogOfFailure(REGDB_E_CLASSNOTREG));
    EXPECT_EQ(Allowed, 0);
    EXPECT_EQ(InFront, Handles{});
}

TEST_F(RegisteredOneNoteStart, FailsWhenNavigationOpensNoWindow) {
    StartOneNote();
    EXPECT_EQ(oneNote_.Navigations.size(), 1U);
    EXPECT_EQ(Logged(), LogOfFailure(E_POINTER));
    EXPECT_EQ(InFront, Handles{});
}

TEST_F(RegisteredOneNoteStart, FailsWhenTheCurrentWindowIsNull) {
    oneNote_.Windows = {nullptr, Other};
    StartOneNote();
    EXPECT_EQ(oneNote_.Navigations, Entries{});
    EXPECT_EQ(Logged(), LogOfFailure(E_POINTER));
    EXPECT_EQ(InFront, Handles{});
}

TEST_F(RegisteredOneNoteStart, CanBeTriedAgain) {
    oneNote_.Fail({L"NavigateTo"}, E_FAIL);
    StartOneNote();
    oneNote_.Windows = {Current};
    StartOneNote();
    EXPECT_EQ(Logged().back(), L"Started OneNote");
    EXPECT_EQ(InFront, Handles{Current});
}

INSTANTIATE_TEST_SUITE_P(, OneNoteStartConnection,
                         testing::Values(Step{"CreateInstance", {L"CreateInstance"}},
                                         Step{"QueryInterface", {L"QueryInterface"}}),
                         NameOfStep);

TEST_P(OneNoteStartConnection, FailsWithTheSystemsMessage) {
    oneNote_.Fail(GetParam().call, E_ACCESSDENIED);
    StartOneNote();
    EXPECT_EQ(Logged(), LogOfFailure(E_ACCESSDENIED));
    EXPECT_EQ(Allowed, 0);
    EXPECT_EQ(InFront, Handles{});
}

INSTANTIATE_TEST_SUITE_P(, OneNoteStartCall,
                         testing::Values(Step{"Windows", {L"Windows"}}, Step{"Count", {L"Count"}},
                                         Step{"NavigateTo", {L"NavigateTo"}},
                                         Step{"WindowsAgain", {L"Windows", 2}, true},
                                         Step{"CurrentWindow", {L"CurrentWindow"}, true},
                                         Step{"WindowHandle", {L"WindowHandle"}, true}),
                         NameOfStep);

TEST_P(OneNoteStartCall, FailsWithItsDescription) {
    oneNote_.Fail(GetParam().call, E_ACCESSDENIED, L"A dialog is open.");
    StartOneNote();
    EXPECT_EQ(Logged(), LogOfFailure(L"A dialog is open. (0x80070005)"));
    EXPECT_EQ(Allowed, GetParam().allowed ? 1 : 0);
    EXPECT_EQ(InFront, Handles{});
}

TEST_P(OneNoteStartCall, FailsWithTheSystemsMessageWithoutADescription) {
    oneNote_.Fail(GetParam().call, E_ACCESSDENIED);
    StartOneNote();
    EXPECT_EQ(Logged(), LogOfFailure(E_ACCESSDENIED));
    EXPECT_EQ(InFront, Handles{});
}

INSTANTIATE_TEST_SUITE_P(, OneNoteStartNull,
                         testing::Values(Step{"Application", {L"QueryInterface"}}, Step{"Collection", {L"Windows"}},
                                         Step{"SecondCollection", {L"Windows", 2}, true}),
                         NameOfStep);

TEST_P(OneNoteStartNull, FailsWithAPointerError) {
    oneNote_.GiveNull(GetParam().call);
    StartOneNote();
    EXPECT_EQ(Logged(), LogOfFailure(E_POINTER));
    EXPECT_EQ(Allowed, GetParam().allowed ? 1 : 0);
    EXPECT_EQ(InFront, Handles{});
}
