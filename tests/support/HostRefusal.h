#pragma once

#include <stdexcept>
#include <string>

namespace vqrx::test {

/// How the text of a HostRefusal begins. Readers of test results look for it.
inline constexpr const char* kHostRefusal = "not possible on this machine: ";

/// Thrown by a test's helper that needs a thing which this machine does not allow, for example
/// another firewall service than that of Windows. The case fails. The runner of the test kit counts
/// such a case apart. Under Wine everything is possible, so there it is an ordinary failure.
class HostRefusal : public std::runtime_error {
public:
    /// @param reason  what the machine does not allow, and the Windows error if there is one
    explicit HostRefusal(const std::string& reason)
        : std::runtime_error(kHostRefusal + reason)
    {
    }
};

} // namespace vqrx::test
