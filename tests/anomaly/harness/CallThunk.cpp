#include "CallThunk.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>

// The part that all thunks share; r11 points to the ThunkedCall. It keeps the arguments of the
// call, asks AnomalyDecide, and calls the function with a copy of the arguments, so that it sees
// the result. The stack frame is a CallFrame. Its description for the unwinder (seh_...) lets
// exceptions of callbacks pass, and lets CallPath.cpp walk from a call to the functions that led to
// it.
asm(R"(
    .text
    .globl AnomalyThunk
    .def AnomalyThunk; .scl 2; .type 32; .endef
    .seh_proc AnomalyThunk
AnomalyThunk:
    subq $0x118, %rsp
    .seh_stackalloc 0x118
    .seh_endprologue
    movq %rcx, 0x120(%rsp)
    movq %rdx, 0x128(%rsp)
    movq %r8, 0x130(%rsp)
    movq %r9, 0x138(%rsp)
    movaps %xmm0, 0x90(%rsp)
    movaps %xmm1, 0xa0(%rsp)
    movaps %xmm2, 0xb0(%rsp)
    movaps %xmm3, 0xc0(%rsp)
    movq %r11, 0x80(%rsp)
    movq %rsp, %rcx
    call AnomalyDecide
    cmpq $1, 0xd0(%rsp)
    je 1f
    movq 0x140(%rsp), %rax
    movq %rax, 0x20(%rsp)
    movq 0x148(%rsp), %rax
    movq %rax, 0x28(%rsp)
    movq 0x150(%rsp), %rax
    movq %rax, 0x30(%rsp)
    movq 0x158(%rsp), %rax
    movq %rax, 0x38(%rsp)
    movq 0x160(%rsp), %rax
    movq %rax, 0x40(%rsp)
    movq 0x168(%rsp), %rax
    movq %rax, 0x48(%rsp)
    movq 0x170(%rsp), %rax
    movq %rax, 0x50(%rsp)
    movq 0x178(%rsp), %rax
    movq %rax, 0x58(%rsp)
    movq 0x180(%rsp), %rax
    movq %rax, 0x60(%rsp)
    movq 0x188(%rsp), %rax
    movq %rax, 0x68(%rsp)
    movq 0x190(%rsp), %rax
    movq %rax, 0x70(%rsp)
    movq 0x198(%rsp), %rax
    movq %rax, 0x78(%rsp)
    movq 0x120(%rsp), %rcx
    movq 0x128(%rsp), %rdx
    movq 0x130(%rsp), %r8
    movq 0x138(%rsp), %r9
    movaps 0x90(%rsp), %xmm0
    movaps 0xa0(%rsp), %xmm1
    movaps 0xb0(%rsp), %xmm2
    movaps 0xc0(%rsp), %xmm3
    movq 0x80(%rsp), %r11
    call *(%r11)
    movq %rax, 0x88(%rsp)
    movq %rsp, %rcx
    call AnomalyReturned
    movq 0x88(%rsp), %rax
    cmpq $2, 0xd0(%rsp)
    jne 2f
1:  movq 0x80(%rsp), %r11
    movq 8(%r11), %rax
2:  addq $0x118, %rsp
    ret
    .seh_endproc
)");

extern "C" void AnomalyThunk();

namespace vqrx::test::anomaly {
namespace {

static_assert(offsetof(ThunkedCall, original) == 0 && offsetof(ThunkedCall, result) == 8);
static_assert(offsetof(CallFrame, stackPassed) == 0x20 && offsetof(CallFrame, call) == 0x80);
static_assert(offsetof(CallFrame, result) == 0x88 && offsetof(CallFrame, registers) == 0x90);
static_assert(offsetof(CallFrame, decision) == 0xD0 && offsetof(CallFrame, path) == 0xD8);
static_assert(offsetof(CallFrame, caller) == 0x118 && offsetof(CallFrame, arguments) == 0x120);

constexpr std::size_t kThunkBytes = 32;
constexpr std::size_t kMaxThunks = 2048;

unsigned char* NextThunk()
{
    static auto* const memory = static_cast<unsigned char*>(
        VirtualAlloc(nullptr, kThunkBytes * kMaxThunks, MEM_COMMIT, PAGE_EXECUTE_READWRITE));
    static std::size_t used = 0;
    if (memory == nullptr || used == kMaxThunks) {
        throw std::runtime_error("no room for the machine code of another thunk");
    }
    return memory + kThunkBytes * used++;
}

} // namespace

void* MakeThunk(ThunkedCall* call)
{
    unsigned char code[] = {0x49, 0xBB, 0,   0, 0, 0, 0, 0, 0, 0, // mov r11, call
                            0x49, 0xBA, 0,   0, 0, 0, 0, 0, 0, 0, // mov r10, AnomalyThunk
                            0x41, 0xFF, 0xE2};                    // jmp r10
    void (*const shared)() = AnomalyThunk;
    std::memcpy(code + 2, &call, sizeof call);
    std::memcpy(code + 12, &shared, sizeof shared);
    unsigned char* const thunk = NextThunk();
    std::memcpy(thunk, code, sizeof code);
    return thunk;
}

} // namespace vqrx::test::anomaly
