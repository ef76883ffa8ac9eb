// How the real executable ends on an error that nothing catches.

#include "tests/support/Machine.h"

namespace {

constexpr DWORD StatusFatalAppExit = 0x40000015;

/// A resource: its type and its name.
using Resource = std::pair<LPCWSTR, LPCWSTR>;
const Resource Logo{L"FILE", MAKEINTRESOURCEW(101)};
const Resource Payload{L"FILE", MAKEINTRESOURCEW(200)};
const Resource Manifest{RT_MANIFEST, CREATEPROCESS_MANIFEST_RESOURCE_ID};
const Resource Icon{RT_GROUP_ICON, MAKEINTRESOURCEW(100)};

class AbnormalEnd : public Machine {
protected:
    /// Deletes all resources and puts back all but the logo: with Wine a single one can't be deleted.
    static void DeleteLogo(const std::filesystem::path& program) {
        const HMODULE original = LoadLibraryExW(FrontEnd().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        const HANDLE update = BeginUpdateResourceW(program.c_str(), TRUE);
        for (const LPCWSTR type : {Logo.first, Manifest.first, Icon.first, LPCWSTR{RT_ICON}, LPCWSTR{RT_VERSION}})
            EnumResourceNamesW(original, type, PutBack, reinterpret_cast<LONG_PTR>(update));
        EXPECT_TRUE(EndUpdateResourceW(update, FALSE));
        FreeLibrary(original);
    }

    /// The bytes of a program's resource; empty when it has none.
    static std::string ReadResource(const std::filesystem::path& program, const Resource& id) {
        const HMODULE module = LoadLibraryExW(program.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        std::string bytes;
        if (const HRSRC resource = FindResourceW(module, id.second, id.first); resource != nullptr)
            bytes.assign(static_cast<const char*>(LockResource(LoadResource(module, resource))),
                         SizeofResource(module, resource));
        FreeLibrary(module);
        return bytes;
    }

private:
    static BOOL CALLBACK PutBack(HMODULE original, LPCWSTR type, LPWSTR name, LONG_PTR update) {
        const HRSRC resource = FindResourceW(original, name, type);
        return name == Logo.second ||
               UpdateResourceW(reinterpret_cast<HANDLE>(update), type, name, LANG_NEUTRAL,
                               LockResource(LoadResource(original, resource)), SizeofResource(original, resource));
    }
};

/// A library or functions that are not to be found.
struct Missing {
    const char* title;
    std::vector<const char*> names;
};

class MissingImport : public AbnormalEnd, public testing::WithParamInterface<Missing> {};

class UncaughtError : public testing::TestWithParam<const wchar_t*> {};

} // namespace

TEST_F(AbnormalEnd, IsAtOnceAndWithoutADialogWhenComCannotBeInitialised) {
    // ReadClassStm answers the null argument with E_INVALIDARG.
    const std::filesystem::path program = CopyFrontEndThatCalls("ReadClassStm", "CoInitialize");
    for (const wchar_t* arguments : {L"/config x", L""}) {
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(Program(program, arguments, Temporary()).ExitCode(), StatusFatalAppExit);
        EXPECT_LT(GetTickCount64() - start, 5000U);
    }
    EXPECT_FALSE(std::filesystem::exists(Target())) << "nothing may be installed";
}

// The first call of malloc is one of the compiler's start-up code. strlen takes the number of bytes for an address.
TEST_F(AbnormalEnd, IsThatOfAFaultInTheStartUpCodeToo) {
    const Program program(CopyFrontEndThatCalls("strlen", "malloc"), L"/config x", Temporary());
    EXPECT_EQ(program.ExitCode(), StatusFatalAppExit);
    EXPECT_TRUE(Logged().empty());
}

TEST_P(MissingImport, EndsTheProcessAtOnceAndWithoutADialog) {
    std::filesystem::path program = CopyFrontEnd();
    for (const char* name : GetParam().names)
        LetCall(program, "missing", name);
    for (const wchar_t* arguments : {L"/config x", L""})
        EXPECT_EQ(Program(program, arguments, Temporary()).ExitCode(), StatusFatalAppExit);
    EXPECT_FALSE(std::filesystem::exists(Target())) << "nothing may be installed";
}

INSTANTIATE_TEST_SUITE_P(, MissingImport,
                         testing::Values(Missing{"Library", {"gdiplus.dll"}}, Missing{"Function", {"GdiplusStartup"}},
                                         Missing{"BeforeTheEntryPoint", {"SetProcessDpiAwareness", "USER32.dll"}}),
                         [](const auto& item) { return item.param.title; });

TEST_F(AbnormalEnd, IsAtOnceAndWithoutADialogWhenTheLogoIsMissing) {
    const std::filesystem::path program = CopyFrontEnd();
    DeleteLogo(program);
    ASSERT_EQ(ReadResource(program, Logo), "");
    for (const Resource& kept : {Payload, Manifest, Icon})
        ASSERT_TRUE(ReadResource(program, kept) == ReadResource(FrontEnd(), kept));

    EXPECT_EQ(Program(program, L"", Temporary()).ExitCode(), StatusFatalAppExit);
    EXPECT_FALSE(std::filesystem::exists(Target())) << "nothing may be installed";
    EXPECT_EQ(Program(program, L"/config \"" + Configuration(L"0") + L'"', Temporary()).ExitCode(), 0U)
        << "without a window it needs no logo";
}

// Errors that the front-end can't be brought to, made by a windowed program that is guarded in the same way.

TEST_P(UncaughtError, EndsTheProcessAtOnceAndWithoutADialog) {
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(Program(ProgramFolder() / "uncaught-error.exe", GetParam()).ExitCode(), StatusFatalAppExit);
    EXPECT_LT(GetTickCount64() - start, 5000U);
}

INSTANTIATE_TEST_SUITE_P(, UncaughtError,
                         testing::Values(L"com", L"standard", L"early", L"thread", L"pool", L"noexcept", L"fault",
                                         L"stack", L"abort"),
                         [](const auto& item) { return std::filesystem::path(item.param).string(); });
