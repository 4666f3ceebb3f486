#pragma once

#include "Finding.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// How COM checks the callers of the running supervisor.
struct ComSecurityFacts {
    /// The log shows how the running supervisor started. Not gathered with machineLimits, as
    /// failures.
    bool known = false;
    std::vector<std::string> failures; ///< its records that COM security could not be set, UTF-8
    bool machineLimits = false;        ///< the registry holds limits for all callers of the machine
};

/// Returns whether a record of the log says that COM security could not be set. Pure.
[[nodiscard]] bool IsComSecurityFailure(const std::string& text);

/// Reads from the registry whether the machine has limits for callers. Windows only.
[[nodiscard]] bool HasMachineLimits();

/// The check "com-security": which security of COM is in force. Pure.
[[nodiscard]] Finding JudgeComSecurity(const ComSecurityFacts& facts);

} // namespace vqrx::client::v0
