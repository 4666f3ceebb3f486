#include "log_perf/Clock.h"

#if !defined(_WIN32)
#include <chrono>
#endif

namespace vqrx::log::log_perf::v2 {

Timestamp CurrentTimestamp() noexcept
{
    Timestamp now{};
#if defined(_WIN32)
    _ftime64(&now);
#else
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    now.time = sinceEpoch.count() / 1000;
    now.millitm = static_cast<unsigned short>(sinceEpoch.count() % 1000);
#endif
    return now;
}

} // namespace vqrx::log::log_perf::v2
