#include "log_perf/queue/MessageText.h"

#include <cstdio>
#include <cstring>

namespace vqrx::log::log_perf::v2 {

std::size_t CleanMessage(char* text, std::size_t length) noexcept
{
    char* out = text;
    for (const char* in = text; in != text + length; ++in) {
        if (*in != '\r') {
            *out++ = *in == '\n' ? ' ' : *in;
        }
    }
    return static_cast<std::size_t>(out - text);
}

// If msvcrt cuts a text or cannot format it, it writes no NUL. The count passed is one less than
// the buffer, whose last byte stays 0, so that the text is terminated in any case.
std::string_view FormatMessageInto(MessageBuffer& buffer, const char* format,
                                   std::va_list arguments) noexcept
{
#if defined(_WIN32)
    _vsnprintf(buffer.data(), kMaxMessageLength, format, arguments);
#else
    std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
#endif
    return {buffer.data(), CleanMessage(buffer.data(), std::strlen(buffer.data()))};
}

std::string FormatMessageText(const char* format, std::va_list arguments)
{
    MessageBuffer buffer{};
    return std::string(FormatMessageInto(buffer, format, arguments));
}

} // namespace vqrx::log::log_perf::v2
