#include "app/DelayLoading.h"

#include <array>
#include <gtest/gtest.h>

namespace {

constexpr std::size_t PageSize = 4096;

/// What a linker makes for a program that calls two functions of a library.
struct Library {
    std::array<char, 12> name{"msvfw32.dll"};
    struct Name {
        WORD hint = 0;
        std::array<char, 16> text;
    };
    std::array<Name, 2> names{Name{0, {"ICOpen"}}, Name{0, {"DrawDibOpen"}}};
    std::array<IMAGE_THUNK_DATA64, 3> lookup{};
    ImgDelayDescr descriptor{};
    alignas(PageSize) std::array<FARPROC, PageSize / sizeof(FARPROC)> slots{};
};

/// Every address in it is relative to this program.
Library Imports;

DWORD Relative(const void* address) {
    return static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(address) -
                              reinterpret_cast<ULONG_PTR>(GetModuleHandleW(nullptr)));
}

class DelayLoading : public testing::Test {
protected:
    void SetUp() override {
        Imports = {};
        Imports.lookup[0].u1.AddressOfData = Relative(Imports.names.data());
        Imports.lookup[1].u1.AddressOfData = Relative(&Imports.names[1]);
        Imports.descriptor.grAttrs = dlattrRva;
        Imports.descriptor.rvaDLLName = Relative(&Imports.name);
        Imports.descriptor.rvaINT = Relative(&Imports.lookup);
        Imports.descriptor.rvaIAT = Relative(&Imports.slots);
    }
};

FARPROC FunctionNamed(const char* name) {
    return GetProcAddress(GetModuleHandleW(L"msvfw32.dll"), name);
}

} // namespace

TEST_F(DelayLoading, FillsEverySlotOfTheLibraryAtTheFirstCallOfAnyFunction) {
    const FARPROC called = LoadDelayed(&Imports.descriptor, &Imports.slots[1]);
    ASSERT_NE(called, nullptr);
    EXPECT_EQ(called, FunctionNamed("DrawDibOpen"));
    EXPECT_EQ(Imports.slots[0], FunctionNamed("ICOpen"));
    EXPECT_EQ(Imports.slots[1], called);
    EXPECT_EQ(Imports.slots[2], nullptr);
}

TEST_F(DelayLoading, LeavesTheLastErrorAsItWas) {
    SetLastError(1234);
    LoadDelayed(&Imports.descriptor, Imports.slots.data());
    EXPECT_EQ(GetLastError(), 1234U);
}

TEST_F(DelayLoading, FillsSlotsThatCanOnlyBeRead) {
    DWORD protection = 0;
    ASSERT_TRUE(VirtualProtect(&Imports.slots, sizeof Imports.slots, PAGE_READONLY, &protection));
    EXPECT_EQ(LoadDelayed(&Imports.descriptor, Imports.slots.data()), FunctionNamed("ICOpen"));
    VirtualProtect(&Imports.slots, sizeof Imports.slots, protection, &protection);
}
