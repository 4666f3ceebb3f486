#pragma once

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// Describes a Windows error number: "error 5 (access denied)". The words in brackets are there for
/// the numbers 2, 3, 5 and 1060 only; other numbers give "error 32". Pure.
[[nodiscard]] std::string ErrorNumberText(std::uint32_t error);

/// Writes an HRESULT as eight hexadecimal digits: "0x80070005". Pure.
[[nodiscard]] std::string ResultText(long result);

} // namespace vqrx::client::v0
