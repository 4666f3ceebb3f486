#pragma once

#include "Finding.h"

#include <string>

namespace vqrx::client::v0 {

/// What WMI reports about this very process. A result is an HRESULT.
struct WmiFacts {
    bool answered = false;           ///< false: WMI did not answer in time, and all below is unset
    std::string connectFailure;      ///< text of the error, UTF-8; empty: connected
    long queryResult = 0;            ///< of the query for this process
    bool knowsThisProcess = false;   ///< the query found this process
    long executablePathResult = 0;   ///< of reading the path of the program
    long commandLineResult = 0;      ///< of reading the command line
    bool executablePathFits = false; ///< the path is the one that Windows reports
};

/// Asks WMI about this process, with the connection and the query that the supervisor uses. The
/// calling thread must be in a multithreaded COM apartment. May block for as long as WMI does not
/// answer. Windows only.
[[nodiscard]] WmiFacts GatherWmiFacts();

/// The check "wmi": whether the supervisor can learn path and command line of a process, which it
/// needs to attach one. Pure.
[[nodiscard]] Finding JudgeWmi(const WmiFacts& facts);

} // namespace vqrx::client::v0
