#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Makes the name of a file of recorded records, for example "000012-2026-11-22T04-36-42.log".
/// @param number  grows from file to file
/// @param timeMs  of the first record, milliseconds since 1970, UTC. If the time has no date, the
///                name is "000012-without-a-date.log"
[[nodiscard]] std::string NameOfRecordFile(std::uint64_t number, std::int64_t timeMs);

/// Returns the number of a name that NameOfRecordFile() makes; nothing for any other name. Pure.
[[nodiscard]] std::optional<std::uint64_t> NumberOfRecordFile(std::string_view name);

} // namespace vqrx::client::v0
