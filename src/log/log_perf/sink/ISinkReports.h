#pragma once

#include <optional>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// A second interface of a sink whose output may stop and go on. The sink reports such trouble here
/// and does not throw because of it. The worker asks after each Write and gives the report to the
/// other sinks as a record of level 0.
class ISinkReports {
public:
    ISinkReports() = default;
    ISinkReports(const ISinkReports&) = delete;
    ISinkReports& operator=(const ISinkReports&) = delete;

    /// Returns the report that is due, once: one line, as docs/messages.md lists it. Worker thread
    /// only.
    /// @throws std::bad_alloc; the report is then still due
    [[nodiscard]] virtual std::optional<std::string> TakeReport() = 0;

protected:
    ~ISinkReports() = default;
};

} // namespace vqrx::log::log_perf::v2
