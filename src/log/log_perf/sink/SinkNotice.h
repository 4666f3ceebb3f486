#pragma once

#include <string>
#include <utility>

namespace vqrx::log::log_perf::v2 {

/// Base of an exception that a sink throws out of Write if the other sinks must report its trouble.
/// The worker then gives them the notice as a record of level 0.
class SinkNotice {
public:
    /// @param notice  one line, as docs/messages.md lists it
    explicit SinkNotice(std::string notice) noexcept
        : notice_(std::move(notice))
    {
    }

    [[nodiscard]] const std::string& Notice() const noexcept { return notice_; }

private:
    std::string notice_;
};

} // namespace vqrx::log::log_perf::v2
