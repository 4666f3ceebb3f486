#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vqrx::guard::v0 {

/// Decides which records of a try are logged. The log is a ring: a try that meets the faults of the
/// try before must not fill it. So the records of a try are left out as long as they repeat those
/// of the try before, one by one. From the first one that differs, all are logged, so that the end
/// of the log shows how the try ended. Pure; for one thread at a time.
class TryRecords {
public:
    /// Begins a try. Before the first try no record is known.
    void BeginTry();

    /// Notes a record. @return whether to log it
    [[nodiscard]] bool Notice(const std::string& text);

private:
    std::vector<std::string> before_; // records of the try before
    std::vector<std::string> now_;
    bool differs_ = false;
};

} // namespace vqrx::guard::v0
