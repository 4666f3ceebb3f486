#include "ExitReason.h"

#include "exception_utils/ExceptionCodeName.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vqrx::client::v0 {
namespace {

// Every code for which the supervisor has a name: the EXCEPTION_* values of winnt.h.
constexpr std::array<std::uint32_t, 20> kNamedExitCodes = {
    0xC0000005, 0xC000008C, 0x80000003, 0x80000002, 0xC000008D, 0xC000008E, 0xC000008F,
    0xC0000090, 0xC0000091, 0xC0000092, 0xC0000093, 0xC000001D, 0xC0000006, 0xC0000094,
    0xC0000095, 0xC0000026, 0xC0000025, 0xC0000096, 0x80000004, 0xC00000FD};

// Reads "Unknown (0x3)".
std::optional<std::uint32_t> CodeWithoutName(std::string_view reason)
{
    constexpr std::string_view unknown = "Unknown (0x";
    if (!reason.starts_with(unknown) || !reason.ends_with(')')) {
        return std::nullopt;
    }
    const std::string_view digits =
        reason.substr(unknown.size(), reason.size() - unknown.size() - 1);
    std::uint32_t code = 0;
    const char* const last = digits.data() + digits.size();
    const auto [end, error] = std::from_chars(digits.data(), last, code, 16);
    return error == std::errc() && end == last ? std::optional(code) : std::nullopt;
}

} // namespace

std::string ReadableReason(const std::string& reason)
{
    const std::optional<std::uint32_t> code = CodeWithoutName(reason);
    if (!code) {
        return reason;
    }
    constexpr std::uint32_t largestPlainCode = 0xFFFF; // larger codes are bit patterns
    if (*code <= largestPlainCode) {
        return "exit code " + std::to_string(*code);
    }
    const std::size_t digits = reason.find("0x");
    return "exit code " + reason.substr(digits, reason.size() - digits - 1);
}

std::optional<std::uint32_t> ExitCodeOfReason(std::string_view reason)
{
    using cpp_utils::exception_utils::v1::ExceptionCodeName;
    const auto found =
        std::find_if(kNamedExitCodes.begin(), kNamedExitCodes.end(),
                     [reason](std::uint32_t code) { return ExceptionCodeName(code) == reason; });
    return found != kNamedExitCodes.end() ? std::optional(*found) : CodeWithoutName(reason);
}

std::string DescribeExitCode(std::uint32_t exitCode)
{
    return ReadableReason(cpp_utils::exception_utils::v1::ExceptionCodeName(exitCode));
}

} // namespace vqrx::client::v0
