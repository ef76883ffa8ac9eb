#include "proof/endurance/Resources.h"

#include <winternl.h>

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace {

/// Every handle of every process.
std::vector<SYSTEM_HANDLE_ENTRY> AllHandles() {
    std::vector<ULONG_PTR> buffer(1 << 20);
    ULONG size = 0;
    EXPECT_EQ(NtQuerySystemInformation(SystemHandleInformation, buffer.data(),
                                       static_cast<ULONG>(buffer.size() * sizeof(ULONG_PTR)), &size),
              0);
    const auto* const table = reinterpret_cast<const SYSTEM_HANDLE_INFORMATION*>(buffer.data());
    return {table->Handle, table->Handle + table->Count};
}

/// The number that stands for processes among the types of objects.
BYTE ProcessType(const std::vector<SYSTEM_HANDLE_ENTRY>& handles, HANDLE process) {
    const auto own = std::ranges::find_if(handles, [process](const SYSTEM_HANDLE_ENTRY& entry) {
        return entry.OwnerPid == GetCurrentProcessId() && entry.HandleValue == reinterpret_cast<ULONG_PTR>(process);
    });
    EXPECT_NE(own, handles.end());
    return own != handles.end() ? own->ObjectType : BYTE{0};
}

/// Wine's table of GDI objects, in which a free place has no type.
std::size_t UsedPlacesInGdiTable(HANDLE process) {
    struct Place {
        ULONG64 object;
        ULONG owner;
        USHORT unique;
        BYTE type;
        BYTE flags;
        ULONG64 userPointer;
    };
    PROCESS_BASIC_INFORMATION information{};
    NtQueryInformationProcess(process, ProcessBasicInformation, &information, sizeof information, nullptr);
    constexpr std::size_t GdiSharedHandleTable = 0xF8; // its place in the process environment block
    const char* const field = reinterpret_cast<const char*>(information.PebBaseAddress) + GdiSharedHandleTable;
    const void* table = nullptr;
    std::vector<Place> places(0x10000);
    EXPECT_TRUE(ReadProcessMemory(process, field, &table, sizeof table, nullptr) &&
                ReadProcessMemory(process, table, places.data(), places.size() * sizeof(Place), nullptr))
        << "error " << GetLastError();
    return static_cast<std::size_t>(std::ranges::count_if(places, [](const Place& place) { return place.type != 0; }));
}

/// Wine's user objects have numbers. A free one is given away again before a new one is: so the highest number among
/// more objects than there are free numbers tells how many others there are.
std::size_t UserObjectsOfTheMachine() {
    std::array<HMENU, 2000> menus{};
    std::ranges::generate(menus, CreateMenu);
    std::size_t highest = 0;
    for (const HMENU menu : menus) {
        EXPECT_NE(menu, nullptr);
        highest = std::max<std::size_t>(highest, LOWORD(reinterpret_cast<ULONG_PTR>(menu)) / 2);
        DestroyMenu(menu);
    }
    return highest - menus.size();
}

std::size_t PrivateBytes(HANDLE process) {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* address = nullptr; VirtualQueryEx(process, address, &region, sizeof region) != 0;
         address = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            bytes += region.RegionSize;
    }
    return bytes;
}

Resources ResourcesNow(HANDLE process) {
    Resources resources;
    const std::vector<SYSTEM_HANDLE_ENTRY> handles = AllHandles();
    const BYTE processType = ProcessType(handles, process);
    for (const SYSTEM_HANDLE_ENTRY& entry : handles) {
        if (entry.OwnerPid == GetProcessId(process))
            ++(entry.ObjectType == processType ? resources.processHandles : resources.otherHandles);
    }
    resources.gdiObjects = GetGuiResources(process, GR_GDIOBJECTS);
    if (resources.gdiObjects == 0)
        resources.gdiObjects = UsedPlacesInGdiTable(process);
    resources.userObjects = GetGuiResources(process, GR_USEROBJECTS);
    if (resources.userObjects == 0)
        resources.userObjects = UserObjectsOfTheMachine();
    resources.privateBytes = PrivateBytes(process);
    return resources;
}

} // namespace

Resources ResourcesOf(HANDLE process) {
    Resources least = ResourcesNow(process);
    for (int reading = 1; reading < 5; ++reading) {
        Sleep(200);
        const Resources now = ResourcesNow(process);
        for (std::size_t Resources::*const count :
             {&Resources::processHandles, &Resources::otherHandles, &Resources::gdiObjects, &Resources::userObjects,
              &Resources::privateBytes})
            least.*count = std::min(least.*count, now.*count);
    }
    return least;
}

void ExpectGrowth(const Resources& before, const Resources& after, std::size_t processHandles, std::size_t bytes) {
    constexpr std::size_t AFewObjects = 8;
    constexpr std::size_t HeapStep = 0x20000;
    EXPECT_EQ(after.processHandles, before.processHandles + processHandles);
    EXPECT_LE(after.otherHandles, before.otherHandles + AFewObjects);
    EXPECT_LE(after.gdiObjects, before.gdiObjects + AFewObjects);
    EXPECT_LE(after.userObjects, before.userObjects + AFewObjects);
    EXPECT_LE(after.privateBytes, before.privateBytes + bytes + HeapStep);
}

std::ostream& operator<<(std::ostream& stream, const Resources& resources) {
    return stream << resources.processHandles << " handles of processes, " << resources.otherHandles
                  << " other handles, " << resources.gdiObjects << " GDI objects, " << resources.userObjects
                  << " user objects, " << resources.privateBytes / 1024 << " KB";
}
