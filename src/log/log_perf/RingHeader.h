#pragma once

#include <cstdint>
#include <istream>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// Where the first record stands: right behind the header line "0x0000000C" and its line end.
inline constexpr std::uint32_t kRingStart = 12;

/// "0x" and eight upper-case hexadecimal digits, without a line end.
std::string FormatRingHeader(std::uint32_t position);

/// Reads the header of a ring file and says where the next record goes: the position it names, or
/// kRingStart when there is none or it lies outside the file.
/// @param file  binary, at its start; where it stands afterwards is undefined
std::uint32_t ReadRingHeader(std::istream& file);

} // namespace vqrx::log::log_perf::v2
