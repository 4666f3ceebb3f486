#pragma once

#include "Finding.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// How COM checks the callers of the running supervisor.
struct ComSecurityFacts {
    bool known = false;                ///< the log shows how the running supervisor started
    std::vector<std::string> failures; ///< its records that COM security could not be set, UTF-8
    bool machineLimits = false;        ///< HasMachineLimits()
    bool recordsMissing = false; ///< the log may lack a failure: it has a gap or damage in this run
};

/// Returns whether a record of the log says that COM security could not be set. Pure.
[[nodiscard]] bool IsComSecurityFailure(const std::string& text);

/// Reads from the registry whether there are limits for all callers of the machine: limits of
/// Windows itself, or of a group policy. Windows only.
[[nodiscard]] bool HasMachineLimits();

/// The check "com-security": which security of COM is in force. Pure.
[[nodiscard]] Finding JudgeComSecurity(const ComSecurityFacts& facts);

} // namespace vqrx::client::v0
