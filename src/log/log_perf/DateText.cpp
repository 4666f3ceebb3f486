#include "log_perf/DateText.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace vqrx::log::log_perf::v2 {

std::string DateText(const Timestamp& timestamp)
{
#if defined(_WIN32)
    const __time64_t seconds = timestamp.time;
    const char* const known = _ctime64(&seconds); // a buffer of the calling thread's own
#else
    const std::time_t seconds = timestamp.time;
    std::array<char, 64> text{};
    const char* const known = ctime_r(&seconds, text.data());
#endif
    std::array<char, 260> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), "%.19s.%03d",
                                     known != nullptr ? known : "\?\?\? \?\?\? \?\? \?\?:\?\?:\?\?",
                                     timestamp.millitm);
    return {buffer.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

} // namespace vqrx::log::log_perf::v2
