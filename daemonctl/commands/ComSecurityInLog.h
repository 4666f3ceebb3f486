#pragma once

#include "ComSecurityCheck.h"
#include "Record.h"

#include <vector>

namespace vqrx::client::v0 {

/// Looks for failures of COM's security in the run of the supervisor that goes on. Leaves
/// machineLimits false. Pure.
/// @param records  all records of the log, in the order of writing
/// @param isSound  whether nothing in the log is damaged. Damage counts wherever it is: nobody
///                 knows to which run an unreadable record belongs
[[nodiscard]] ComSecurityFacts ComSecurityInLog(const std::vector<Record>& records, bool isSound);

} // namespace vqrx::client::v0
