#include "core/ComError.h"

#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

namespace {

class ComErrorTexts : public testing::Test {
protected:
    void TearDown() override { CustomErrorTexts.clear(); }
};

HRESULT HresultOf(DWORD code) {
    return ThrownBy([=] { ThrowWin32Error(code); });
}

/// A COM object that may say that its interfaces set error information.
class Source : public IUnknown {
public:
    struct Support : ISupportErrorInfo {
        HRESULT Answer = S_OK;
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
        ULONG STDMETHODCALLTYPE AddRef() override { return ++References; }
        ULONG STDMETHODCALLTYPE Release() override { return --References; }
        HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
            Asked = iid;
            return Answer;
        }
        ULONG References = 0;
        IID Asked{};
    };

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (!HasSupport || iid != IID_ISupportErrorInfo)
            return E_NOINTERFACE;
        ErrorInfoSupport.AddRef();
        *object = &ErrorInfoSupport;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    Support ErrorInfoSupport;
    bool HasSupport = true;
};

/// The description of the error that `_com_issue_errorex` throws for the object, after somebody set one on this thread.
std::wstring DescriptionFrom(IUnknown* source) {
    IErrorInfo* const information = MakeErrorInformation(L"the last call's description");
    SetErrorInfo(0, information);
    information->Release();
    try {
        _com_issue_errorex(E_FAIL, source, IID_IDispatch);
    } catch (const _com_error& error) {
        SetErrorInfo(0, nullptr);
        EXPECT_EQ(error.Error(), E_FAIL);
        const _bstr_t description = error.Description();
        return {static_cast<const wchar_t*>(description), description.length()};
    }
    return L"nothing was thrown";
}

} // namespace

TEST(Win32Error, BecomesAnHresultOfItsFacilityUnlessItIsZeroOrNegative) {
    EXPECT_EQ(HresultOf(ERROR_SHARING_VIOLATION), static_cast<HRESULT>(0x80070020));
    EXPECT_EQ(HresultOf(ERROR_CANCELLED), static_cast<HRESULT>(0x800704C7));
    EXPECT_EQ(HresultOf(0x12345), static_cast<HRESULT>(0x80072345));
    EXPECT_EQ(HresultOf(0), 0);
    EXPECT_EQ(HresultOf(static_cast<DWORD>(ErrorTempFile)), ErrorTempFile);
    EXPECT_EQ(HresultOf(static_cast<DWORD>(E_UNEXPECTED)), E_UNEXPECTED);
}

TEST(Win32Error, OfARegistryCallIsThrownUnlessTheCallSucceeded) {
    EXPECT_NO_THROW(ThrowIfWin32Failed(ERROR_SUCCESS));
    EXPECT_EQ(ThrownBy([] { ThrowIfWin32Failed(ERROR_ACCESS_DENIED); }), E_ACCESSDENIED);
}

TEST(PrivateErrorCodes, AreMinusHundredAndMinusNinetyNine) {
    EXPECT_EQ(static_cast<DWORD>(ErrorReadResource), 0xFFFFFF9CU);
    EXPECT_EQ(static_cast<DWORD>(ErrorTempFile), 0xFFFFFF9DU);
}

TEST_F(ComErrorTexts, OfTheProgramComeFirst) {
    CustomErrorTexts[ErrorReadResource] = L"our text";
    const _com_error error(ErrorReadResource, MakeErrorInformation(L"a description"));
    EXPECT_EQ(ComErrorText(error), L"our text (0xffffff9c)");
}

TEST_F(ComErrorTexts, OfTheProgramThatAreEmptyAreNotUsed) {
    CustomErrorTexts[E_FAIL] = L"";
    EXPECT_EQ(ComErrorText(_com_error(E_FAIL, MakeErrorInformation(L"a description"))), L"a description (0x80004005)");
}

TEST_F(ComErrorTexts, TakeTheDescriptionBeforeTheSystemsMessage) {
    EXPECT_EQ(ComErrorText(_com_error(E_ACCESSDENIED, MakeErrorInformation(L"why it was denied"))),
              L"why it was denied (0x80070005)");
}

TEST_F(ComErrorTexts, PassOverAnEmptyDescription) {
    EXPECT_EQ(ComErrorText(_com_error(E_ACCESSDENIED, MakeErrorInformation(L""))),
              SystemMessage(E_ACCESSDENIED) + L" (0x80070005)");
}

TEST_F(ComErrorTexts, TakeTheSystemsMessageWithoutItsLineBreak) {
    ASSERT_FALSE(SystemMessage(HRESULT_FROM_WIN32(ERROR_CANCELLED)).empty());
    EXPECT_EQ(ComErrorText(_com_error(HRESULT_FROM_WIN32(ERROR_CANCELLED))),
              SystemMessage(HRESULT_FROM_WIN32(ERROR_CANCELLED)) + L" (0x800704c7)");
    EXPECT_EQ(ComErrorText(_com_error(E_ACCESSDENIED)), SystemMessage(E_ACCESSDENIED) + L" (0x80070005)");
    EXPECT_EQ(ComErrorText(_com_error(1)), SystemMessage(1) + L" (0x1)");
    EXPECT_EQ(ComErrorText(_com_error(0)), SystemMessage(0) + L" (0x0)");
}

TEST_F(ComErrorTexts, KeepTheInsertsOfTheSystemsMessage) {
    const HRESULT badFormat = HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT); // "%1 is not a valid Win32 application."
    ASSERT_NE(SystemMessage(badFormat).find(L"%1"), std::wstring::npos);
    EXPECT_EQ(ComErrorText(_com_error(badFormat)), SystemMessage(badFormat) + L" (0x800700c1)");
}

TEST_F(ComErrorTexts, NameACodeThatTheSystemDoesNotKnow) {
    EXPECT_EQ(ComErrorText(_com_error(static_cast<HRESULT>(0x8ABCDEF0))), L"Unknown error 0x8ABCDEF0 (0x8abcdef0)");
    EXPECT_EQ(ComErrorText(_com_error(static_cast<HRESULT>(0x80040207))), L"IDispatch error #7 (0x80040207)");
}

TEST_F(ComErrorTexts, AreAskedForInTheUsersLanguageAndLoseOneLineBreak) {
    using Function = DWORD(DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, char**); // va_list* without its attributes
    const ImportPatch<Function> format(
        "FormatMessageW", [](DWORD, LPCVOID, DWORD, DWORD language, LPWSTR text, DWORD size, char**) -> DWORD {
            EXPECT_EQ(language, static_cast<DWORD>(MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT)));
            constexpr std::wstring_view Message = L"one\r\n\r\n";
            return static_cast<DWORD>(Message.copy(text, size));
        });
    EXPECT_EQ(ComErrorText(_com_error(E_ACCESSDENIED)), L"one\r\n (0x80070005)");
}

TEST_F(ComErrorTexts, AreTheCodeAloneWhenThereIsNoMessageAtAll) {
    using Function = DWORD(DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, char**); // va_list* without its attributes
    const ImportPatch<Function> format("FormatMessageW",
                                       [](DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, char**) -> DWORD { return 0; });
    const ImportPatch<decltype(LocalAlloc)> allocate("LocalAlloc", [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    EXPECT_EQ(ComErrorText(_com_error(E_ACCESSDENIED)), L" (0x80070005)");
}

TEST_F(ComErrorTexts, LeaveTheTableAsItIs) {
    ComErrorText(_com_error(E_FAIL));
    EXPECT_TRUE(CustomErrorTexts.empty());
}

TEST(IssuedComError, CarriesTheDescriptionOfAnInterfaceThatSetsOne) {
    Source source;
    EXPECT_EQ(DescriptionFrom(&source), L"the last call's description");
    EXPECT_EQ(source.ErrorInfoSupport.Asked, IID_IDispatch);
    EXPECT_EQ(source.ErrorInfoSupport.References, 0U);
}

TEST(IssuedComError, CarriesNoLeftoverOfAnotherCall) {
    Source source;
    source.ErrorInfoSupport.Answer = S_FALSE;
    EXPECT_EQ(DescriptionFrom(&source), L"");
    EXPECT_EQ(source.ErrorInfoSupport.References, 0U);
    source.HasSupport = false;
    EXPECT_EQ(DescriptionFrom(&source), L"");
    EXPECT_EQ(DescriptionFrom(nullptr), L"");
}

TEST(IssuedComError, CarriesNoDescriptionWhenTheThreadHasNone) {
    Source source;
    const ImportPatch<decltype(GetErrorInfo)> get("GetErrorInfo",
                                                  [](ULONG, IErrorInfo**) -> HRESULT { return S_FALSE; });
    EXPECT_EQ(DescriptionFrom(&source), L"");
}
