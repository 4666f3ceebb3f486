#include "log_perf/time/DateText.h"

#include <charconv>
#include <cstdio>
#include <ctime>

namespace vqrx::log::log_perf::v2 {

namespace {

constexpr const char* kUnknown = R"(??? ??? ?? ??:??:??)";

} // namespace

std::string_view DateTextOfSecond::Of(const Timestamp& timestamp)
{
    if (secondsLength_ == 0 || second_ != timestamp.time) {
#if defined(_WIN32)
        const __time64_t seconds = timestamp.time;
        const char* const known = _ctime64(&seconds); // returns a buffer per thread
#else
        const std::time_t seconds = timestamp.time;
        std::array<char, 64> buffer{};
        const char* const known = ctime_r(&seconds, buffer.data());
#endif
        const int length = std::snprintf(text_.data(), text_.size(), "%.19s.",
                                         known != nullptr ? known : kUnknown);
        secondsLength_ = static_cast<std::size_t>(length);
        second_ = timestamp.time;
    }
    char* digit = text_.data() + secondsLength_;
    const unsigned milliseconds = timestamp.millitm;
    if (milliseconds < 100) {
        *digit++ = '0';
    }
    if (milliseconds < 10) {
        *digit++ = '0';
    }
    const auto end = std::to_chars(digit, text_.data() + text_.size(), milliseconds).ptr;
    return {text_.data(), static_cast<std::size_t>(end - text_.data())};
}

std::string DateText(const Timestamp& timestamp)
{
    DateTextOfSecond text;
    return std::string(text.Of(timestamp));
}

} // namespace vqrx::log::log_perf::v2
