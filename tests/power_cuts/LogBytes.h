#pragma once

#include "log_perf/ring/LogFileSink.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

namespace vqrx::test {

inline constexpr std::int64_t kRunBegins = 1795236736;    ///< seconds since 1970
inline constexpr std::int64_t kPowerReturns = 1795300000; ///< later than any record of a run

/// Returns this moment and seven milliseconds.
[[nodiscard]] log::log_perf::v2::Timestamp At(std::int64_t seconds);

/// Returns a sink as the supervisor makes it. It has not opened the file yet.
[[nodiscard]] std::unique_ptr<log::log_perf::v2::LogFileSink> NewSink(const std::string& name,
                                                                      std::uint32_t limit);

/// Returns the content of a file.
[[nodiscard]] std::string ContentOf(const std::string& name);

/// Replaces the content of a file. The test fails if that fails.
void Put(const std::string& name, const std::string& bytes);

using Lines = std::unordered_set<std::string_view>;

/// Returns the lines that have an end, with their ends: views into the bytes.
[[nodiscard]] Lines LinesOf(std::string_view bytes);

} // namespace vqrx::test
