// The stand-in for OneNote is registered as OneNote is, and has every member where OneNote has it.

#include "install/OneNoteAutomation.h"
#include "tests/support/ComApartment.h"
#include "tests/support/LabOneNote.h"
#include "tests/support/Registry.h"
#include "tests/support/TestFolder.h"

#include <map>
#include <string>

namespace {

struct Member {
    int slot = 0;
    MEMBERID id = 0;
    INVOKEKIND kind = INVOKE_FUNC;
    bool operator==(const Member&) const = default;
};

/// By name; a property that can be written has a second one, with "=" behind its name.
using Members = std::map<std::wstring, Member>;

const Members ApplicationMembers{
    {L"GetHierarchy", {7, 0x60020000}},
    {L"UpdateHierarchy", {8, 0x60020001}},
    {L"OpenHierarchy", {9, 0x60020002}},
    {L"DeleteHierarchy", {10, 0x60020003}},
    {L"CreateNewPage", {11, 0x60020004}},
    {L"CloseNotebook", {12, 0x60020005}},
    {L"GetHierarchyParent", {13, 0x60020006}},
    {L"GetPageContent", {14, 0x60020007}},
    {L"UpdatePageContent", {15, 0x60020008}},
    {L"GetBinaryPageContent", {16, 0x60020009}},
    {L"DeletePageContent", {17, 0x6002000A}},
    {L"NavigateTo", {18, 0x6002000B}},
    {L"NavigateToUrl", {19, 0x6002000C}},
    {L"Publish", {20, 0x6002000D}},
    {L"OpenPackage", {21, 0x6002000E}},
    {L"GetHyperlinkToObject", {22, 0x6002000F}},
    {L"FindPages", {23, 0x60020010}},
    {L"FindMeta", {24, 0x60020011}},
    {L"GetSpecialLocation", {25, 0x60020012}},
    {L"MergeFiles", {26, 0x60020013}},
    {L"QuickFiling", {27, 0x60020014}},
    {L"SyncHierarchy", {28, 0x60020015}},
    {L"SetFilingLocation", {29, 0x60020016}},
    {L"Windows", {30, 0x64, INVOKE_PROPERTYGET}},
    {L"Dummy1", {31, 0x66, INVOKE_PROPERTYGET}},
    {L"MergeSections", {32, 0x60020019}},
    {L"COMAddIns", {33, 0x68, INVOKE_PROPERTYGET}},
    {L"LanguageSettings", {34, 0x69, INVOKE_PROPERTYGET}},
    {L"GetWebHyperlinkToObject", {35, 0x6002001C}},
};

const Members CollectionMembers{
    {L"Item", {7, 0, INVOKE_PROPERTYGET}},
    {L"Count", {8, 1, INVOKE_PROPERTYGET}},
    {L"_NewEnum", {9, -4, INVOKE_PROPERTYGET}},
    {L"CurrentWindow", {10, 3, INVOKE_PROPERTYGET}},
};

const Members WindowMembers{
    {L"WindowHandle", {7, 0, INVOKE_PROPERTYGET}},
    {L"CurrentPageId", {8, 1, INVOKE_PROPERTYGET}},
    {L"CurrentSectionId", {9, 2, INVOKE_PROPERTYGET}},
    {L"CurrentSectionGroupId", {10, 3, INVOKE_PROPERTYGET}},
    {L"CurrentNotebookId", {11, 4, INVOKE_PROPERTYGET}},
    {L"NavigateTo", {12, 9}},
    {L"FullPageView", {13, 10, INVOKE_PROPERTYGET}},
    {L"FullPageView=", {14, 10, INVOKE_PROPERTYPUT}},
    {L"Active", {15, 11, INVOKE_PROPERTYGET}},
    {L"Active=", {16, 11, INVOKE_PROPERTYPUT}},
    {L"DockedLocation", {17, 13, INVOKE_PROPERTYGET}},
    {L"DockedLocation=", {18, 13, INVOKE_PROPERTYPUT}},
    {L"Application", {19, 14, INVOKE_PROPERTYGET}},
    {L"SideNote", {20, 15, INVOKE_PROPERTYGET}},
    {L"NavigateToUrl", {21, 16}},
    {L"SetDockedLocation", {22, 17}},
};

_COM_SMARTPTR_TYPEDEF(ITypeLib, __uuidof(ITypeLib));
_COM_SMARTPTR_TYPEDEF(ITypeInfo, __uuidof(ITypeInfo));

class OneNoteLibrary : public testing::Test {
protected:
    void SetUp() override {
        oneNote_.Register();
        const GUID id{0x0EA692EE, 0xBB50, 0x4E3C, {0xAE, 0xF0, 0x35, 0x6D, 0x91, 0x73, 0x27, 0x25}};
        ASSERT_EQ(LoadRegTypeLib(id, 1, 1, LOCALE_NEUTRAL, &library_), S_OK);
    }

    /// The members of an interface behind those of IDispatch, as its functions are called.
    Members MembersOf(const IID& iid) const {
        Members members;
        ITypeInfoPtr dual;
        EXPECT_EQ(library_->GetTypeInfoOfGuid(iid, &dual), S_OK);
        HREFTYPE reference = 0;
        EXPECT_EQ(dual->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
        ITypeInfoPtr type;
        EXPECT_EQ(dual->GetRefTypeInfo(reference, &type), S_OK);
        FUNCDESC* function = nullptr;
        for (UINT index = 0; type->GetFuncDesc(index, &function) == S_OK; ++index) {
            _bstr_t name;
            type->GetDocumentation(function->memid, name.GetAddress(), nullptr, nullptr, nullptr);
            const wchar_t* const suffix = function->invkind == INVOKE_PROPERTYPUT ? L"=" : L"";
            members[static_cast<const wchar_t*>(name) + std::wstring(suffix)] = {
                function->oVft / static_cast<int>(sizeof(void*)), function->memid, function->invkind};
            type->ReleaseFuncDesc(function);
        }
        return members;
    }

private:
    ComApartment apartment_;
    TestFolder folder_;
    LabOneNote oneNote_{folder_.Path().wstring() + L'\\'};
    ITypeLibPtr library_;
};

/// One that is registered and runs.
class RunningOneNote : public testing::Test {
protected:
    void SetUp() override {
        OneNote.Register();
        OneNote.Start();
    }

    static HRESULT Connect(const CLSID& automation, OneNoteApplicationPtr& application) {
        return application.CreateInstance(automation, nullptr, CLSCTX_LOCAL_SERVER);
    }

    ComApartment Apartment;
    TestFolder Folder;
    LabOneNote OneNote{Folder.Path().wstring() + L'\\'};
};

} // namespace

TEST_F(OneNoteLibrary, HasEveryMemberOfTheApplicationInItsSlot) {
    EXPECT_EQ(MembersOf(IID_IApplication), ApplicationMembers);
}

TEST_F(OneNoteLibrary, HasEveryMemberOfTheCollectionInItsSlot) {
    EXPECT_EQ(MembersOf(IID_IOneNoteWindows), CollectionMembers);
}

TEST_F(OneNoteLibrary, HasEveryMemberOfAWindowInItsSlot) {
    EXPECT_EQ(MembersOf(IID_IOneNoteWindow), WindowMembers);
}

TEST_F(RunningOneNote, IsServedUnderBothOfItsClasses) {
    const CLSID second{0xDC67E480, 0xC3CB, 0x49F8, {0x82, 0x32, 0x60, 0xB0, 0xC2, 0x05, 0x6C, 0x8E}};
    for (const CLSID& automation : {CLSID_OneNoteApplication, second}) {
        OneNoteApplicationPtr application;
        EXPECT_EQ(Connect(automation, application), S_OK);
    }
}

TEST_F(RunningOneNote, AnswersThatItDoesNotImplementWhatNobodyCalls) {
    OneNoteApplicationPtr application;
    ASSERT_EQ(Connect(CLSID_OneNoteApplication, application), S_OK);
    EXPECT_EQ(application->SyncHierarchy(_bstr_t(L"{notebook}")), E_NOTIMPL);
}

TEST_F(RunningOneNote, EndsWhenItsWindowIsClosedByASentMessage) {
    SendMessageW(LabOneNote::Windows().at(0), WM_CLOSE, 0, 0);
    EXPECT_EQ(OneNote.Started().ExitCode(), 0U);
    OneNote.ExpectRecord({L"Started", L"Ended"});
}

TEST(LabOneNoteInTheRegistry, IsGoneWithoutATraceEvenWhenAPartWasMissing) {
    const auto exists = [](const wchar_t* name) {
        UniqueRegistryKey key;
        return RegOpenKeyExW(HKEY_CLASSES_ROOT, name, 0, KEY_READ, key.Receive()) == ERROR_SUCCESS;
    };
    const wchar_t* const names[] = {L"CLSID\\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}",
                                    L"CLSID\\{DC67E480-C3CB-49F8-8232-60B0C2056C8E}",
                                    L"OneNote.Application.14",
                                    L"OneNote.Application.15",
                                    L"Interface\\{452AC71A-B655-4967-A208-A4CC39DD7949}",
                                    L"Interface\\{6D4B9C3E-CC05-493F-85E2-43D1006DF96A}",
                                    L"Interface\\{8E8304B8-CBD1-44F8-B0E8-89C625B2002E}",
                                    L"TypeLib\\{0EA692EE-BB50-4E3C-AEF0-356D91732725}"};
    for (const wchar_t* missing : names) {
        const TestFolder folder;
        {
            LabOneNote oneNote(folder.Path().wstring() + L'\\');
            oneNote.Register();
            EXPECT_TRUE(exists(missing));
            RegDeleteTreeW(HKEY_CLASSES_ROOT, missing);
        }
        for (const wchar_t* name : names)
            EXPECT_FALSE(exists(name)) << testing::PrintToString(std::wstring(name));
    }
}
