#include "log_perf/MessageText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace vqrx::log::log_perf::v2 {

std::size_t CleanMessage(char* text, std::size_t length) noexcept
{
    char* const end = text + length;
    std::replace(text, end, '\n', ' ');
    return static_cast<std::size_t>(std::remove(text, end, '\r') - text);
}

std::string FormatMessageText(const char* format, std::va_list arguments)
{
    // One more than the count that is passed, and all zero: msvcrt leaves a cut text unterminated.
    std::array<char, kMaxMessageLength + 1> buffer{};
#if defined(_WIN32)
    _vsnprintf(buffer.data(), kMaxMessageLength, format, arguments);
#else
    std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
#endif
    return {buffer.data(), CleanMessage(buffer.data(), std::strlen(buffer.data()))};
}

} // namespace vqrx::log::log_perf::v2
