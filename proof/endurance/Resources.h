#pragma once

#include <windows.h>

#include <cstddef>
#include <ostream>

/// What a process holds at one moment. Windows counts all of it; Wine counts none of it for those who ask as one asks
/// Windows, so it is counted by what both let be seen.
struct Resources {
    /// Handles of processes, and of everything else.
    std::size_t processHandles = 0;
    std::size_t otherHandles = 0;
    /// Bitmaps, brushes, fonts, regions, device contexts.
    std::size_t gdiObjects = 0;
    /// Windows, menus, icons: under Wine those of the whole machine.
    std::size_t userObjects = 0;
    /// Committed memory that no other process sees.
    std::size_t privateBytes = 0;

    friend std::ostream& operator<<(std::ostream& stream, const Resources& resources);
};

/// The least of each within a second, since threads of the pool come and go. A test failure when it can't be told.
Resources ResourcesOf(HANDLE process);

/// A test failure unless exactly so many handles of processes have come since, at most so much memory, and nothing
/// else: but for a few objects of a pool's thread, and the step in which heaps grow.
void ExpectGrowth(const Resources& before, const Resources& after, std::size_t processHandles, std::size_t bytes);
