#pragma once

namespace vqrx::log::i_logger::v0 {

// Severity of a log message. A lower number is more severe.
inline constexpr int kLevelError = 0;
inline constexpr int kLevelWarning = 1;
inline constexpr int kLevelInformation = 2;
inline constexpr int kLevelDetail = 3;

} // namespace vqrx::log::i_logger::v0
