#pragma once

#include <cstdint>
#include <span>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// A result code of the product and its message.
struct ResultCodeMessage {
    std::uint32_t code; ///< failure HRESULT of the form 0x8025xxxx
    const char* message;
};

/// Returns the result codes of the product in ascending order. All of them are failures, also the
/// one with the message "No error".
[[nodiscard]] std::span<const ResultCodeMessage> ProductResultCodes() noexcept;

} // namespace vqrx::cpp_utils::exception_utils::v1
