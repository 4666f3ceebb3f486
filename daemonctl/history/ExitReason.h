#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Writes the reason for an end for people: "exit code 3" for "Unknown (0x3)", and "exit code
/// 0xc0000001" for a code above 0xFFFF. Returns any other reason unchanged. Pure.
[[nodiscard]] std::string ReadableReason(const std::string& reason);

/// Returns the exit code that a reason of the log stands for. Pure.
/// @return nothing for a text that the supervisor never writes as a reason
[[nodiscard]] std::optional<std::uint32_t> ExitCodeOfReason(std::string_view reason);

/// Writes an exit code for people, in the words of ReadableReason(): "Access violation" for
/// 0xC0000005, "exit code 3" for 3. Pure.
[[nodiscard]] std::string DescribeExitCode(std::uint32_t exitCode);

} // namespace vqrx::client::v0
