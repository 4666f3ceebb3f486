#pragma once

#include "log_perf/sink/SinkNotice.h"

#include <string>
#include <utility>

namespace vqrx::log::log_perf::v2 {

/// A conversion error that names the log file in which it was found.
/// @tparam Error  std::invalid_argument or std::out_of_range
template <typename Error>
class DamagedLogFile final : public Error, public SinkNotice {
public:
    /// @param error   the conversion error; what() keeps its text
    /// @param notice  see SinkNotice
    DamagedLogFile(const Error& error, std::string notice)
        : Error(error)
        , SinkNotice(std::move(notice))
    {
    }
};

} // namespace vqrx::log::log_perf::v2
