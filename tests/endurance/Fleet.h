#pragma once

#include "ChildProcess.h"
#include "LogLedger.h"
#include "SupervisorProcess.h"

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace vqrx::test {

/// The daemons of every kind that are registered during the whole run.
class Fleet {
public:
    /// Lets the supervisor launch or attach the daemons.
    /// @param daemons  their number
    /// @throws std::invalid_argument  if the number is too small for one daemon of each kind
    /// @throws std::runtime_error  if the supervisor answers wrongly
    Fleet(SupervisorProcess& supervisor, unsigned daemons);

    struct Daemon {
        std::string name;
        std::string kind;
        DWORD id;
    };
    [[nodiscard]] const std::vector<Daemon>& Daemons() const { return daemons_; }
    /// Returns the names of the daemons that always run.
    [[nodiscard]] std::vector<std::string> Running() const;
    /// Returns the number of starts, also of failed starts, of each daemon that never runs for
    /// long.
    [[nodiscard]] std::map<std::string, std::size_t> Attempts(const LogLedger& ledger) const;
    /// Text of the log for the exit code with which KillOne ends a process.
    static constexpr const char* kKilled = "Exception caught in : Unknown (0x4d)";
    /// Ends the process of a random daemon and waits for its restart.
    /// @return milliseconds until the restart; 0 if there is none within a minute
    [[nodiscard]] DWORD KillOne(const LogLedger& ledger);
    [[nodiscard]] unsigned Killed() const { return killed_; }

private:
    void Launch(SupervisorProcess& supervisor, const std::string& kind, unsigned count);
    void Attach(SupervisorProcess& supervisor, unsigned count);

    std::vector<Daemon> daemons_;
    std::vector<std::unique_ptr<ChildProcess>> attached_;
    std::mt19937 random_{20261121};
    unsigned killed_ = 0;
};

/// Reports whether a daemon with this name runs.
[[nodiscard]] bool HoldsName(const std::string& name);

} // namespace vqrx::test
