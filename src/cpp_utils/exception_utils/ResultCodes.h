#pragma once

#include <cstdint>
#include <span>

namespace vqrx::cpp_utils::exception_utils::v1 {

struct ResultCodeMessage {
    std::uint32_t code; ///< failure HRESULT of the form 0x8025xxxx
    const char* message;
};

/// The product's own result codes, in ascending order. "No error" is a failure value on purpose.
std::span<const ResultCodeMessage> ProductResultCodes() noexcept;

} // namespace vqrx::cpp_utils::exception_utils::v1
