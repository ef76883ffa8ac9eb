#pragma once

#include <windows.h>

#include <cstdint>

/// The registers at a call: those that carry parameters, then those that a function keeps.
struct Registers {
    std::uint64_t rcx, rdx, r8, r9;
    std::uint64_t rbx, rbp, rsi, rdi, r12, r13, r14, r15;
    std::uint64_t xmm[8];
    /// What the caller gets when the call goes no further.
    std::uint64_t result;
    std::uint64_t reserved;
    std::uint64_t returnAddress;

    /// A parameter that is a number or a pointer, counted from 0.
    std::uint64_t& Parameter(std::size_t index) { return index < 4 ? (&rcx)[index] : (&returnAddress)[1 + index]; }

    template <typename Pointer>
    Pointer PointerAt(std::size_t index) {
        return reinterpret_cast<Pointer>(Parameter(index));
    }
};

/// Decides about each call that goes through a thunk made with that context: returns the function that it goes on to,
/// with the registers as they are then; or null, and the caller gets `result`. In any thread; must keep the thread's
/// last error.
void* OnCall(void* context, Registers& registers) noexcept;

/// Makes a function that hands every call to `OnCall`. It lasts as long as the process; null without memory.
void* MakeThunk(void* context);
