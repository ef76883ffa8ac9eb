// The declarations of OneNote's interfaces: that each call reaches its slot, and that it works across processes.

#include "install/OneNoteAutomation.h"

#include "tests/support/ComApartment.h"
#include "tests/support/LabOneNote.h"
#include "tests/support/TestFolder.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <utility>

namespace {

std::size_t CalledSlot = 0;

template <std::size_t Slot>
HRESULT STDMETHODCALLTYPE RecordSlot(void* /*object*/) {
    CalledSlot = Slot;
    return S_OK;
}

template <std::size_t... Slots>
constexpr std::array<HRESULT(STDMETHODCALLTYPE*)(void*), sizeof...(Slots)>
MakeFunctionTable(std::index_sequence<Slots...> /*slots*/) {
    return {RecordSlot<Slots>...};
}

/// An object whose every function records the slot through which it was called.
struct SlotRecorder {
    const void* functions = Table.data();

    static constexpr auto Table = MakeFunctionTable(std::make_index_sequence<64>{});
};

struct Member {
    const char* name;
    std::size_t slot;
    HRESULT (*call)(void* object);
};

class OneNoteSlot : public testing::TestWithParam<Member> {};

/// A member of an interface, called with null or zero for every argument.
template <auto Function>
struct Caller;
template <typename Interface, typename... Arguments, HRESULT (STDMETHODCALLTYPE Interface::*Function)(Arguments...)>
struct Caller<Function> {
    static HRESULT Call(void* object) { return (static_cast<Interface*>(object)->*Function)(Arguments{}...); }
};

template <auto Function>
Member MakeMember(const char* name, std::size_t slot) {
    return {name, slot, Caller<Function>::Call};
}

} // namespace

TEST_P(OneNoteSlot, IsWhereTheLibraryHasIt) {
    SlotRecorder recorder;
    CalledSlot = 0;
    GetParam().call(&recorder);
    EXPECT_EQ(CalledSlot, GetParam().slot);
}

#define MEMBER(type, name, slot) MakeMember<&type::name>(#type "_" #name, slot)
INSTANTIATE_TEST_SUITE_P(
    , OneNoteSlot,
    testing::Values(MEMBER(IApplication, GetHierarchy, 7), MEMBER(IApplication, UpdateHierarchy, 8),
                    MEMBER(IApplication, OpenHierarchy, 9), MEMBER(IApplication, DeleteHierarchy, 10),
                    MEMBER(IApplication, CreateNewPage, 11), MEMBER(IApplication, CloseNotebook, 12),
                    MEMBER(IApplication, GetHierarchyParent, 13), MEMBER(IApplication, GetPageContent, 14),
                    MEMBER(IApplication, UpdatePageContent, 15), MEMBER(IApplication, GetBinaryPageContent, 16),
                    MEMBER(IApplication, DeletePageContent, 17), MEMBER(IApplication, NavigateTo, 18),
                    MEMBER(IApplication, NavigateToUrl, 19), MEMBER(IApplication, Publish, 20),
                    MEMBER(IApplication, OpenPackage, 21), MEMBER(IApplication, GetHyperlinkToObject, 22),
                    MEMBER(IApplication, FindPages, 23), MEMBER(IApplication, FindMeta, 24),
                    MEMBER(IApplication, GetSpecialLocation, 25), MEMBER(IApplication, MergeFiles, 26),
                    MEMBER(IApplication, QuickFiling, 27), MEMBER(IApplication, SyncHierarchy, 28),
                    MEMBER(IApplication, SetFilingLocation, 29), MEMBER(IApplication, get_Windows, 30),
                    MEMBER(IOneNoteWindows, get_Item, 7), MEMBER(IOneNoteWindows, get_Count, 8),
                    MEMBER(IOneNoteWindows, get_NewEnum, 9), MEMBER(IOneNoteWindows, get_CurrentWindow, 10),
                    MEMBER(IOneNoteWindow, get_WindowHandle, 7)),
    [](const auto& item) { return item.param.name; });
#undef MEMBER

TEST(OneNoteAutomation, ReachesEveryMemberThatTheProgramCallsInAnotherProcess) {
    const ComApartment apartment;
    const TestFolder folder;
    LabOneNote oneNote(folder.Path().wstring() + L'\\');
    oneNote.Set(L"Windows=2");
    oneNote.Register();
    oneNote.Start();
    HWND second = FindWindowW(L"LabOneNote", L"OneNote 2");
    SetWindowPos(second, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    {
        OneNoteApplicationPtr application;
        ASSERT_EQ(CreateOneNoteApplication(application), S_OK);
        OneNoteWindowsPtr collection;
        ASSERT_EQ(application->get_Windows(&collection), S_OK);
        std::uint32_t count = 0;
        EXPECT_EQ(collection->get_Count(&count), S_OK);
        EXPECT_EQ(count, 2U);
        OneNoteWindowPtr window;
        ASSERT_EQ(collection->get_Item(0, &window), S_OK);
        std::uint64_t handle = 0;
        EXPECT_EQ(window->get_WindowHandle(&handle), S_OK);
        EXPECT_EQ(reinterpret_cast<HWND>(handle), FindWindowW(L"LabOneNote", L"OneNote 1"));
        ASSERT_EQ(collection->get_CurrentWindow(&window), S_OK);
        EXPECT_EQ(window->get_WindowHandle(&handle), S_OK);
        EXPECT_EQ(reinterpret_cast<HWND>(handle), second);
        EXPECT_EQ(application->NavigateTo(_bstr_t(L"{notebook}"), _bstr_t(L"{page}"), VARIANT_TRUE), S_OK);
        EXPECT_EQ(LabOneNote::Windows().size(), 3U);
    }
    oneNote.ExpectRecord(
        (Entries{L"Started", L"CreateInstance", L"Windows", L"Count", L"Item(0)", L"WindowHandle", L"CurrentWindow",
                 L"WindowHandle", LR"(NavigateTo("{notebook}", "{page}", -1))", L"No references"}));
}
