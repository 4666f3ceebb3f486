#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

namespace vqrx::log::log_perf::v2 {

/// A longer message is cut to so many characters.
inline constexpr std::size_t kMaxMessageLength = 1040;

/// Makes one line of a message: a line feed becomes a space, a carriage return disappears.
/// @return the new length
std::size_t CleanMessage(char* text, std::size_t length) noexcept;

/// Room for a message of the greatest length and its end.
using MessageBuffer = std::array<char, kMaxMessageLength + 1>;

/// Formats as printf does, cuts and cleans. A message that cannot be formatted is what could be.
/// @param buffer  all zero; the result points into it
std::string_view FormatMessageInto(MessageBuffer& buffer, const char* format,
                                   std::va_list arguments) noexcept;

/// The same, as a text of its own. @throws std::bad_alloc
std::string FormatMessageText(const char* format, std::va_list arguments);

} // namespace vqrx::log::log_perf::v2
