#include "Measure.h"

#include <cstdio>

#include <windows.h>

namespace vqrx::bench {
namespace {

long long Counter() noexcept
{
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    return counter.QuadPart;
}

double Frequency() noexcept
{
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(frequency.QuadPart);
}

} // namespace

Stopwatch::Stopwatch() noexcept
    : start_(Counter())
{
}

double Stopwatch::Seconds() const noexcept
{
    static const double frequency = Frequency();
    return static_cast<double>(Counter() - start_) / frequency;
}

void Report(const std::string& name, double value)
{
    std::printf("%s %.9g\n", name.c_str(), value);
    std::fflush(stdout);
}

} // namespace vqrx::bench
