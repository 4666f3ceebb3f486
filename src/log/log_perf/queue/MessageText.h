#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

namespace vqrx::log::log_perf::v2 {

/// Greatest length of a message, bytes. A longer one is cut.
inline constexpr std::size_t kMaxMessageLength = 1040;

/// Turns a message into one line, in place: a line feed becomes a space, a carriage return is
/// removed.
/// @return the new length, at most the old one
[[nodiscard]] std::size_t CleanMessage(char* text, std::size_t length) noexcept;

/// Room for a message of the greatest length and its terminating NUL.
using MessageBuffer = std::array<char, kMaxMessageLength + 1>;

/// Formats a message as printf does, in msvcrt's dialect on Windows, then cuts and cleans it. If
/// formatting fails, the part formatted so far is kept. Allocates nothing.
/// @param buffer  all zero
/// @return a view into the buffer
[[nodiscard]] std::string_view FormatMessageInto(MessageBuffer& buffer, const char* format,
                                                 std::va_list arguments) noexcept;

/// Formats a message like FormatMessageInto, into a string. @throws std::bad_alloc
[[nodiscard]] std::string FormatMessageText(const char* format, std::va_list arguments);

} // namespace vqrx::log::log_perf::v2
