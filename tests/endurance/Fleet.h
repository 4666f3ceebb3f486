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

/// The daemons that are there from the beginning to the end, of every kind.
class Fleet {
public:
    /// Has them all launched or attached.
    Fleet(SupervisorProcess& supervisor, unsigned daemons);

    struct Daemon {
        std::string name;
        std::string kind;
        DWORD id;
    };
    const std::vector<Daemon>& Daemons() const { return daemons_; }
    /// The names of those that always run.
    std::vector<std::string> Running() const;
    /// How often those that never run for long were started so far, or tried to be, by name.
    std::map<std::string, std::size_t> Attempts(const LogLedger& ledger) const;
    /// The exit code with which KillOne ends processes, as the log names it.
    static constexpr const char* kKilled = "Exception caught in : Unknown (0x4d)";
    /// Ends one of the daemons behind the supervisor's back and waits until it runs again.
    /// @return milliseconds until then; 0 when it did not come back within a minute
    DWORD KillOne(const LogLedger& ledger);
    unsigned Killed() const { return killed_; }

private:
    void Launch(SupervisorProcess& supervisor, const std::string& kind, unsigned count);
    void Attach(SupervisorProcess& supervisor, unsigned count);

    std::vector<Daemon> daemons_;
    std::vector<std::unique_ptr<ChildProcess>> attached_;
    std::mt19937 random_{20261121};
    unsigned killed_ = 0;
};

/// Whether a daemon of this name runs.
bool HoldsName(const std::string& name);

} // namespace vqrx::test
