#include "install/OneNoteWindows.h"

#include "install/OneNoteAutomation.h"
#include "tests/support/ComApartment.h"
#include "tests/support/FakeOneNote.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LabPrograms.h"

#include <gtest/gtest.h>

namespace {

using Call = FakeOneNote::Call;

struct Thrown {
    HRESULT result = S_OK;
    std::wstring description;
};

class OneNoteWindows : public testing::Test {
protected:
    void SetUp() override {
        oneNote_.Register();
        Posted.clear();
    }
    /// No interface may be kept by the code under test.
    void TearDown() override { EXPECT_EQ(oneNote_.References(), 0); }

    static Thrown Close() {
        try {
            CloseOneNoteWindows();
        } catch (const _com_error& error) {
            const _bstr_t description = error.Description();
            return {error.Error(),
                    description.length() != 0 ? static_cast<const wchar_t*>(description) : std::wstring()};
        }
        return {};
    }

    ComApartment apartment_;
    FakeOneNote oneNote_;
    static inline std::vector<HWND> Posted;
};

/// Records what is posted, and posts nothing.
class PostedCloses : public OneNoteWindows {
    ImportPatch<decltype(PostMessageW)> patch_{"PostMessageW",
                                               [](HWND window, UINT message, WPARAM w, LPARAM l) -> BOOL {
                                                   EXPECT_EQ(message, static_cast<UINT>(WM_CLOSE));
                                                   EXPECT_TRUE(w == 0 && l == 0);
                                                   Posted.push_back(window);
                                                   return FALSE; // which nobody checks
                                               }};
};

struct Failure {
    const char* name;
    Call call;
};

class OneNoteFailure : public PostedCloses, public testing::WithParamInterface<Failure> {};

/// A window of the test's own, with a child in it.
class FramedWindow {
public:
    FramedWindow()
        : frame_(
              CreateWindowExW(0, L"Static", L"", WS_OVERLAPPEDWINDOW, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr)),
          child_(CreateWindowExW(0, L"Static", L"", WS_CHILD, 0, 0, 5, 5, frame_, nullptr, nullptr, nullptr)) {}
    FramedWindow(const FramedWindow&) = delete;
    FramedWindow& operator=(const FramedWindow&) = delete;
    ~FramedWindow() { DestroyWindow(frame_); }

    HWND Frame() const { return frame_; }
    HWND Child() const { return child_; }

private:
    HWND frame_;
    HWND child_;
};

} // namespace

TEST_F(OneNoteWindows, OfARealProgramCloseWhenTheyAreAsked) {
    const TargetProgram program;
    oneNote_.Windows = {program.Window()};
    EXPECT_EQ(Close().result, S_OK);
    EXPECT_EQ(program.ExitCode(), 0U);
}

TEST_F(PostedCloses, GoToTheTopLevelWindowOfEachInOrder) {
    const FramedWindow first;
    const FramedWindow second;
    oneNote_.Windows = {first.Child(), second.Frame()};
    EXPECT_EQ(Close().result, S_OK);
    EXPECT_EQ(Posted, (std::vector{first.Frame(), second.Frame()}));
}

TEST_F(PostedCloses, NeverGoToTheDesktop) {
    const FramedWindow window;
    oneNote_.Windows = {GetDesktopWindow(), window.Frame()};
    const ImportPatch<decltype(GetAncestor)> ancestor("GetAncestor", [](HWND handle, UINT which) -> HWND {
        EXPECT_EQ(which, static_cast<UINT>(GA_ROOT));
        return handle; // the desktop would be null otherwise
    });
    EXPECT_EQ(Close().result, S_OK);
    EXPECT_EQ(Posted, std::vector{window.Frame()});
}

TEST_F(PostedCloses, ReachNoWindowForOneThatIsGoneAndGoOn) {
    const HWND gone = FramedWindow().Frame();
    const FramedWindow window;
    oneNote_.Windows = {gone, window.Frame()};
    EXPECT_EQ(Close().result, S_OK);
    EXPECT_EQ(Posted, (std::vector<HWND>{nullptr, window.Frame()}));
}

TEST_F(PostedCloses, AreNoneWithoutWindows) {
    EXPECT_EQ(Close().result, S_OK);
    EXPECT_TRUE(Posted.empty());
}

TEST_F(PostedCloses, AreNoneWhenACollectionIsNull) {
    oneNote_.GiveNull({L"Windows"});
    EXPECT_EQ(Close().result, E_POINTER);
    EXPECT_TRUE(Posted.empty());
}

TEST_F(PostedCloses, AreNoneWhenTheApplicationIsNull) {
    oneNote_.GiveNull({L"QueryInterface"});
    EXPECT_EQ(Close().result, E_POINTER);
    EXPECT_TRUE(Posted.empty());
}

TEST_F(PostedCloses, AreNoneWhenAServerGivesNoObject) {
    const ImportPatch<decltype(CoCreateInstance)> create(
        "CoCreateInstance", [](REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID* object) -> HRESULT {
            *object = nullptr;
            return S_OK;
        });
    OneNoteApplicationPtr application;
    EXPECT_EQ(CreateOneNoteApplication(application), S_OK);
    EXPECT_EQ(application.GetInterfacePtr(), nullptr);
    EXPECT_EQ(Close().result, E_POINTER);
    EXPECT_TRUE(Posted.empty());
}

TEST_F(PostedCloses, BeginWhenAllWindowsAreKnown) {
    const FramedWindow first;
    const FramedWindow second;
    oneNote_.Windows = {first.Frame(), second.Frame()};
    oneNote_.Fail({L"Item", 2}, E_FAIL);
    EXPECT_EQ(Close().result, E_FAIL);
    EXPECT_TRUE(Posted.empty());
}

TEST_F(PostedCloses, StopAtANullWindow) {
    const FramedWindow first;
    const FramedWindow last;
    oneNote_.Windows = {first.Frame(), nullptr, last.Frame()};
    EXPECT_EQ(Close().result, E_POINTER);
    EXPECT_EQ(Posted, std::vector{first.Frame()});
}

INSTANTIATE_TEST_SUITE_P(, OneNoteFailure,
                         testing::Values(Failure{"Windows", {L"Windows"}}, Failure{"Count", {L"Count"}},
                                         Failure{"Item", {L"Item"}}, Failure{"WindowHandle", {L"WindowHandle"}}),
                         [](const auto& item) { return item.param.name; });

TEST_P(OneNoteFailure, IsThrownWithItsDescription) {
    const FramedWindow window;
    oneNote_.Windows = {window.Frame()};
    oneNote_.Fail(GetParam().call, static_cast<HRESULT>(0x80042030), L"A dialog is open.");
    const Thrown thrown = Close();
    EXPECT_EQ(thrown.result, static_cast<HRESULT>(0x80042030));
    EXPECT_EQ(thrown.description, L"A dialog is open.");
    EXPECT_TRUE(Posted.empty());
}

TEST_P(OneNoteFailure, IsThrownWithoutADescription) {
    const FramedWindow window;
    oneNote_.Windows = {window.Frame()};
    SetErrorInfo(0, nullptr);
    oneNote_.Fail(GetParam().call, E_FAIL);
    const Thrown thrown = Close();
    EXPECT_EQ(thrown.result, E_FAIL);
    EXPECT_EQ(thrown.description, L"");
}

TEST_F(PostedCloses, AreNoneWhenTheApplicationCannotBeCreated) {
    oneNote_.Fail({L"CreateInstance"}, CO_E_SERVER_EXEC_FAILURE);
    EXPECT_EQ(Close().result, CO_E_SERVER_EXEC_FAILURE);
    EXPECT_TRUE(Posted.empty());
}

TEST(OneNoteApplication, IsAskedForInAnyContextAsAnUnknownObject) {
    static DWORD askedContext;
    static IID askedInterface;
    const ImportPatch<decltype(CoCreateInstance)> create(
        "CoCreateInstance", [](REFCLSID, LPUNKNOWN outer, DWORD context, REFIID iid, LPVOID* object) -> HRESULT {
            EXPECT_EQ(outer, nullptr);
            askedContext = context;
            askedInterface = iid;
            *object = nullptr;
            return E_ACCESSDENIED;
        });
    OneNoteApplicationPtr application;
    EXPECT_EQ(CreateOneNoteApplication(application), E_ACCESSDENIED);
    EXPECT_EQ(askedContext, 0x17U);
    EXPECT_EQ(askedInterface, IID_IUnknown);
}

TEST(OneNoteApplication, IsNotThereWhereItIsNotRegistered) {
    const ComApartment apartment;
    OneNoteApplicationPtr application;
    EXPECT_EQ(CreateOneNoteApplication(application), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(application.GetInterfacePtr(), nullptr);
}

TEST_F(OneNoteWindows, ApplicationReplacesTheOneThatWasHeld) {
    OneNoteApplicationPtr application;
    EXPECT_EQ(CreateOneNoteApplication(application), S_OK);
    const int references = oneNote_.References();
    EXPECT_GT(references, 0);
    EXPECT_EQ(CreateOneNoteApplication(application), S_OK);
    EXPECT_EQ(oneNote_.References(), references);

    oneNote_.Fail({L"QueryInterface"}, E_NOINTERFACE);
    EXPECT_EQ(CreateOneNoteApplication(application), E_NOINTERFACE);
    EXPECT_EQ(application.GetInterfacePtr(), nullptr);
}

TEST_F(OneNoteWindows, ApplicationIsNullWhenItCannotBeRun) {
    const ImportPatch<decltype(OleRun)> run("OleRun", [](IUnknown*) -> HRESULT { return CO_E_SERVER_EXEC_FAILURE; });
    OneNoteApplicationPtr application;
    EXPECT_EQ(CreateOneNoteApplication(application), CO_E_SERVER_EXEC_FAILURE);
    EXPECT_EQ(application.GetInterfacePtr(), nullptr);
}
