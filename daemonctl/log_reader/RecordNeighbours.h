#pragma once

#include "ByteSource.h"
#include "RawLines.h"
#include "Record.h"

#include <cstdint>
#include <optional>

namespace vqrx::client::v0 {

/// Returns the number after this one; the largest number is followed by the smallest.
[[nodiscard]] std::int64_t NumberAfter(std::int64_t number) noexcept;

/// Returns whether `next` is the number after `number`; false if one of them is unknown.
[[nodiscard]] bool Follows(const std::optional<std::int64_t>& next,
                           const std::optional<std::int64_t>& number) noexcept;

/// Returns whether `next` follows `record`: its number is one higher and its time is not earlier.
/// False if one of the two is missing.
[[nodiscard]] bool Follows(const std::optional<Record>& next,
                           const std::optional<Record>& record) noexcept;

/// Reads one line.
/// @return its record; nothing if the line is missing, is cut, or is not exactly a record
/// @throws what the source of the lines throws; std::bad_alloc
[[nodiscard]] std::optional<Record> ReadWholeRecord(RawLines& lines);

/// Reads the number of the first line in a range of bytes.
/// @return nothing if there is no line, or no number that can be read
/// @throws what the source throws; std::bad_alloc
[[nodiscard]] std::optional<std::int64_t> FirstNumber(ByteSource& source, std::uint64_t begin,
                                                      std::uint64_t end);

/// Reads the last line in a range of bytes. Reads at most the last 64 KiB of the range.
/// @return its record; nothing if there is no line, or the last line is not exactly a record
/// @throws what the source throws; std::bad_alloc
[[nodiscard]] std::optional<Record> LastRecord(ByteSource& source, std::uint64_t begin,
                                               std::uint64_t end);

} // namespace vqrx::client::v0
