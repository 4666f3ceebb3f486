#pragma once

#include <functional>
#include <string>

namespace vqrx::client::v0 {

/// Receives the lines that describe the progress of an operation. daemonctl prints them. Each line
/// is UTF-8 without a line end; Printable() has been applied to texts of daemons.
struct Reporter {
    using Line = std::function<void(const std::string& line)>;
    Line done;    ///< something was done, or needed not be done
    Line waiting; ///< the operation begins to wait for something that may take long
    Line failed;  ///< something failed, or is to be noticed by a person
};

} // namespace vqrx::client::v0
