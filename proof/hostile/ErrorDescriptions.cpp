#include "core/ComError.h"
#include "core/RegistryEntry.h"
#include "proof/hostile/HostileText.h"
#include "proof/hostile/Inputs.h"
#include "proof/hostile/LogTail.h"
#include "proof/hostile/Rules.h"
#include "tests/support/ImportPatch.h"

#include <comdef.h>

namespace {

using namespace std::string_view_literals;

constexpr std::wstring_view Pieces[] = {
    L"The hive is gone.",
    L"\r\n",
    L"\n",
    L"\r",
    L"\0"sv,
    L"%1",
    L"%s%n",
    L"ERROR: ",
    L" (0x80070005)",
    L"\r\nSun Nov  1 00:00:00 2026 - State: Complete",
    L"Größe",
    L"\x0421\x043B\x043E\x0432\x043E",
    L"\xD83D\xDE00",
};

/// Error information whose description is any text, or that refuses to tell it.
class ErrorInformation : public IErrorInfo {
public:
    std::optional<std::wstring> Text;
    ULONG References = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*iid*/, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++References; }
    ULONG STDMETHODCALLTYPE Release() override { return --References; }
    HRESULT STDMETHODCALLTYPE GetGUID(GUID* /*guid*/) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSource(BSTR* /*source*/) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* /*file*/) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* /*context*/) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR* description) override {
        if (!Text)
            return E_FAIL;
        *description = SysAllocStringLen(Text->data(), static_cast<UINT>(Text->size()));
        return S_OK;
    }
};

ErrorInformation Information;

void Describe(Random& random) {
    Information.Text.reset();
    if (!random.OneIn(6))
        Information.Text = random.OneIn(2) ? HostileText(random) : TextOf(random, Pieces);
}

std::string DescriptionLiteral() {
    return Information.Text ? Literal(*Information.Text) : "no description";
}

HRESULT HostileResult(Random& random) {
    constexpr std::array<HRESULT, 8> Usual{ErrorReadResource, ErrorTempFile,    E_FAIL,        S_OK,
                                           E_ACCESSDENIED,    DISP_E_EXCEPTION, E_OUTOFMEMORY, S_FALSE};
    switch (random.Below(4)) {
    case 0:
        return random.Pick(Usual);
    case 1:
        return HRESULT_FROM_WIN32(static_cast<DWORD>(random.Below(16'000)));
    case 2: // the range of the automation servers' own errors
        return static_cast<HRESULT>(0x80040000 + random.Below(0x11000));
    default:
        return static_cast<HRESULT>(random.Next());
    }
}

} // namespace

TEST(HostileError, HasTheTextThatTheRulesGive) {
    ForEachInput({.sample = 50'000, .whole = 300'000}, [](Random& random) {
        const HRESULT result = HostileResult(random);
        Describe(random);
        CustomErrorTexts.clear();
        CustomErrorTexts[ErrorReadResource] = random.OneIn(3) ? L"" : TextOf(random, Pieces);
        CustomErrorTexts[ErrorTempFile] = L"No \"temporary\" file.";
        const bool informed = !random.OneIn(4);
        const std::wstring text = ComErrorText(_com_error(result, informed ? &Information : nullptr, true));
        const std::wstring expected =
            Rules::ErrorText(result, CustomErrorTexts, informed ? Information.Text : std::nullopt);
        if (text != expected || Information.References != 1)
            ADD_FAILURE() << "HRESULT " << result << ", " << (informed ? DescriptionLiteral() : "no information")
                          << "\nhas the text " << Literal(text) << ", not " << Literal(expected);
    });
    CustomErrorTexts.clear();
}

TEST(HostileErrorOfADeletion, IsLoggedAsTheRulesSay) {
    const ImportPatch<decltype(RegDeleteTreeW)> remove(
        "RegDeleteTreeW", [](HKEY, LPCWSTR) -> LSTATUS { throw _com_error(E_FAIL, &Information, true); });
    LogTail log;
    ForEachInput({.sample = 10'000, .whole = 100'000}, [&log](Random& random) {
        Describe(random);
        const RegistryEntry entry{.root = HKEY_CURRENT_USER, .subkey = HostileName(random)};
        entry.Delete();
        log.Expect({L"Deleting registry key: HKCU\\" + entry.subkey + L"\\@",
                    L"ERROR: " + Rules::ThroughAnsi(Information.Text.value_or(L""))});
        if (testing::Test::HasFailure())
            ADD_FAILURE() << Literal(entry.subkey) << ' ' << DescriptionLiteral();
    });
}
