#include "proof/faults/Thunk.h"

#include <array>
#include <cstddef>
#include <cstring>

extern "C" {
void FaultThunk();
void* FaultThunkDecide(void* context, Registers* registers) noexcept;
}

void* FaultThunkDecide(void* context, Registers* registers) noexcept {
    return OnCall(context, *registers);
}

static_assert(offsetof(Registers, xmm) == 0x60 && offsetof(Registers, result) == 0xA0 &&
              offsetof(Registers, returnAddress) == 0xB0);

// The thunk's context comes in r11, which no function expects anything in. The registers lie right below the return
// address. Kept ones are only saved to be looked at.
asm(R"(
    .globl FaultThunk
FaultThunk:
    subq $0xD8, %rsp
    movq %rcx, 0x28(%rsp)
    movq %rdx, 0x30(%rsp)
    movq %r8, 0x38(%rsp)
    movq %r9, 0x40(%rsp)
    movq %rbx, 0x48(%rsp)
    movq %rbp, 0x50(%rsp)
    movq %rsi, 0x58(%rsp)
    movq %rdi, 0x60(%rsp)
    movq %r12, 0x68(%rsp)
    movq %r13, 0x70(%rsp)
    movq %r14, 0x78(%rsp)
    movq %r15, 0x80(%rsp)
    movups %xmm0, 0x88(%rsp)
    movups %xmm1, 0x98(%rsp)
    movups %xmm2, 0xA8(%rsp)
    movups %xmm3, 0xB8(%rsp)
    movq %r11, %rcx
    leaq 0x28(%rsp), %rdx
    call FaultThunkDecide
    movq %rax, %r11
    movq 0x28(%rsp), %rcx
    movq 0x30(%rsp), %rdx
    movq 0x38(%rsp), %r8
    movq 0x40(%rsp), %r9
    movups 0x88(%rsp), %xmm0
    movups 0x98(%rsp), %xmm1
    movups 0xA8(%rsp), %xmm2
    movups 0xB8(%rsp), %xmm3
    movq 0xC8(%rsp), %rax
    addq $0xD8, %rsp
    testq %r11, %r11
    je 1f
    jmp *%r11
1:
    ret
)");

void* MakeThunk(void* context) {
    // movabs $context, %r11; movabs $FaultThunk, %r10; jmp *%r10
    std::array<unsigned char, 23> code{0x49, 0xBB, 0, 0, 0, 0, 0, 0, 0,    0,    0x49, 0xBA,
                                       0,    0,    0, 0, 0, 0, 0, 0, 0x41, 0xFF, 0xE2};
    void (*const target)() = FaultThunk;
    std::memcpy(code.data() + 2, &context, sizeof context);
    std::memcpy(code.data() + 12, &target, sizeof target);
    constexpr std::size_t Room = 32;
    constexpr std::size_t BlockSize = 0x10000;
    static unsigned char* block = nullptr;
    static std::size_t used = BlockSize;
    if (used + Room > BlockSize) {
        block = static_cast<unsigned char*>(
            VirtualAlloc(nullptr, BlockSize, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
        used = 0;
    }
    if (block == nullptr)
        return nullptr;
    unsigned char* const place = block + used;
    used += Room;
    std::memcpy(place, code.data(), code.size());
    return place;
}
