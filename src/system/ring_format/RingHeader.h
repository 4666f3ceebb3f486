#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>

namespace vqrx::system::ring_format::v1 {

/// Length of the header's text "0x0000000C", without its line end "\r\n".
inline constexpr std::size_t kRingHeaderLength = 10;

/// Offset of the first record in a ring file, bytes: it follows the header and its line end.
inline constexpr std::uint32_t kRingStart = 12;

/// Size limit of the log files of supervisor and guard, bytes. The record that crosses it is
/// written whole; the next one begins at kRingStart. So no record begins beyond the limit.
inline constexpr std::uint32_t kRingSizeLimit = 0x100000;

/// Formats the header of a ring file: "0x" and eight upper-case hexadecimal digits, without a line
/// end. Allocates nothing.
/// @param position  offset at which the next record is written, bytes
[[nodiscard]] std::string FormatRingHeader(std::uint32_t position);

/// Reads the header for the program that writes the ring. Any bytes give a usable position.
/// @param file  binary, at its start; its read position is undefined afterwards
/// @return the offset at which the next record is written; kRingStart if the file begins with no
///         hexadecimal number, or if the number is below kRingStart or beyond the end of the file;
///         nothing if the system refuses to read the file's front, for example because another
///         program has locked it, or to tell the file's length. Then the position is not known, and
///         kRingStart would overwrite the records.
[[nodiscard]] std::optional<std::uint32_t> ReadRingHeader(std::istream& file);

/// Parses the header strictly, for a program that reads a ring which another one writes.
/// @param bytes  the first bytes of the file, at least kRingHeaderLength + 1; more are ignored
/// @return the number in the header, not checked against the size of the file; nothing if the bytes
///         are not "0x", eight hexadecimal digits and a carriage return or line feed
[[nodiscard]] std::optional<std::uint32_t> ParseRingHeader(std::string_view bytes) noexcept;

} // namespace vqrx::system::ring_format::v1
