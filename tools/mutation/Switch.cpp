#include "Switch.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace mutant {
namespace {

constexpr int kMostMutants = 65536; // bytes of the file of reached places, one for each

// Maps the file in which each reached place sets its byte. A mapping keeps what it holds when the
// process is terminated, and a write to it changes nothing else in the process.
unsigned char* MapReached() noexcept
{
    const char* const name = std::getenv("DM_MUTANT_REACHED");
    if (name == nullptr) {
        return nullptr;
    }
#ifdef _WIN32
    const DWORD access = GENERIC_READ | GENERIC_WRITE;
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const HANDLE file = CreateFileA(name, access, share, nullptr, OPEN_EXISTING, 0, nullptr);
    const HANDLE mapping =
        CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0, kMostMutants, nullptr);
    void* const bytes = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, kMostMutants);
    CloseHandle(mapping);
    CloseHandle(file);
    return static_cast<unsigned char*>(bytes);
#else
    const int file = open(name, O_RDWR | O_CLOEXEC);
    void* const bytes = mmap(nullptr, kMostMutants, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return bytes == MAP_FAILED ? nullptr : static_cast<unsigned char*>(bytes);
#endif
}

struct Environment {
    int chosen = 0;
    unsigned char* reached = nullptr;
};

Environment Read() noexcept
{
#ifdef _WIN32
    const DWORD error = GetLastError();
#endif
    const char* const text = std::getenv("DM_MUTANT");
    const Environment result{text == nullptr ? 0 : std::atoi(text), MapReached()};
#ifdef _WIN32
    SetLastError(error);
#endif
    return result;
}

const Environment& TheEnvironment() noexcept
{
    static const Environment environment = Read();
    return environment;
}

// Read before main: a test may later replace the functions that Read calls.
[[maybe_unused]] const Environment& early = TheEnvironment();

} // namespace

bool IsChosen(int id) noexcept
{
    const Environment& environment = TheEnvironment();
    if (environment.reached != nullptr) {
        environment.reached[id] = 1;
    }
    return id == environment.chosen;
}

} // namespace mutant
