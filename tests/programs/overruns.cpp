// Child program that writes the secret value of its stack protector and then writes past the end of
// a buffer. Writes "returned" if nothing stops it.
#include <windows.h>

#include <cstdint>
#include <cstdio>

extern "C" std::uintptr_t __stack_chk_guard; // GCC's name

namespace {

[[gnu::noinline]] void Overrun(std::size_t count)
{
    char buffer[16];
    volatile char* const begin = buffer;
    for (std::size_t index = 0; index < count; ++index) {
        begin[index] = 'x';
    }
}

} // namespace

int main(int argc, char**)
{
    SetErrorMode(SEM_NOGPFAULTERRORBOX | SEM_FAILCRITICALERRORS);
    std::printf("%llx\n", static_cast<unsigned long long>(__stack_chk_guard));
    std::fflush(stdout);
    Overrun(static_cast<std::size_t>(argc) * 32); // the compiler cannot see that this is too much
    std::printf("returned\n");
    return 0;
}
