// In place of the part of GCC's libssp that makes the secret value. That part asks Windows'
// cryptographic provider before main. Windows then loads the libraries of the provider while it
// still looks for libraries in the program's folder: somebody could have planted one there. The
// functions here call kernel32 alone. This file itself is compiled without the stack protector.
#include "StackGuard.h"

#include <windows.h>

#include <initializer_list>

// NOLINTBEGIN(bugprone-reserved-identifier): the names are GCC's
extern "C" {

std::uintptr_t __stack_chk_guard = 0;

// A protected function calls it if its stack is damaged.
[[noreturn]] void __stack_chk_fail();
// A checked function of the C library calls it before it would overrun a buffer.
[[noreturn]] void __chk_fail();
}

namespace vqrx::cpp_utils::stack_guard::v1 {
namespace {

[[noreturn]] void End(const char* text, DWORD length) noexcept
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, length, &written, nullptr);
    __builtin_trap(); // nothing of this process can be relied on any more
}

// Before every other constructor of the program: no protected function may be running.
__attribute__((constructor(101))) void SetStackGuard() noexcept
{
    LARGE_INTEGER counter{};
    FILETIME time{};
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&time);
    StartValues values;
    values.time = (std::uint64_t{time.dwHighDateTime} << 32U) | time.dwLowDateTime;
    values.counter = static_cast<std::uint64_t>(counter.QuadPart) ^ __builtin_ia32_rdtsc();
    values.process = (std::uint64_t{GetCurrentProcessId()} << 32U) | GetCurrentThreadId();
    values.address = reinterpret_cast<std::uint64_t>(&values) ^
                     (reinterpret_cast<std::uint64_t>(&__stack_chk_guard) << 16U);
    __stack_chk_guard = MixStackGuard(values);
}

} // namespace

std::uintptr_t MixStackGuard(const StartValues& values) noexcept
{
    // The finaliser of MurmurHash3 (Austin Appleby, public domain): each bit of a value changes
    // about half of the bits of the result.
    const auto mix = [](std::uint64_t value) {
        value ^= value >> 33U;
        value *= 0xFF51AFD7ED558CCDU;
        value ^= value >> 33U;
        value *= 0xC4CEB9FE1A85EC53U;
        return value ^ (value >> 33U);
    };
    std::uint64_t guard = 0;
    for (const std::uint64_t value :
         {values.time, values.counter, values.process, values.address}) {
        guard = mix(guard + value + 1);
    }
    return static_cast<std::uintptr_t>(guard & ~std::uint64_t{0xFF});
}

} // namespace vqrx::cpp_utils::stack_guard::v1

void __stack_chk_fail()
{
    static constexpr char kText[] = "*** stack smashing detected ***: terminated\r\n";
    vqrx::cpp_utils::stack_guard::v1::End(kText, sizeof kText - 1);
}

void __chk_fail()
{
    static constexpr char kText[] = "*** buffer overflow detected ***: terminated\r\n";
    vqrx::cpp_utils::stack_guard::v1::End(kText, sizeof kText - 1);
}
// NOLINTEND(bugprone-reserved-identifier)
