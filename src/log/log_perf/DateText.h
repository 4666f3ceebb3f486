#pragma once

#include "log_perf/Timestamp.h"

#include <string>

namespace vqrx::log::log_perf::v2 {

/// Local time as sinks write it: "Mon Nov 16 03:52:36.123" (23 characters). A time that the C
/// runtime cannot express reads "??? ??? ?? ??:??:??" before the milliseconds.
std::string DateText(const Timestamp& timestamp);

} // namespace vqrx::log::log_perf::v2
