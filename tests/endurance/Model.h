#pragma once

#include "Clients.h"
#include "Failures.h"
#include "Fleet.h"
#include "Followers.h"
#include "SupervisorProcess.h"

#include <windows.h>

#include <cstddef>
#include <map>
#include <string>

namespace vqrx::test {

/// Compares the real supervisor, its daemons and its log with the requests of the test and of its
/// clients. Each difference is a failure. The arguments of the constructor must outlive the model.
class Model {
public:
    /// Limit for each change that the supervisor has to make, on two busy cores.
    static constexpr ULONGLONG kDeadlineMs = 120000;

    /// @param ranTwice  event that a daemon program signals if a second process with its name runs
    Model(SupervisorProcess& supervisor, const Fleet& fleet, Clients& clients,
          const Followers& followers, HANDLE ranTwice, Failures& failures);

    /// Waits until exactly the right daemons run, at most kDeadlineMs. Then checks that no daemon
    /// ran twice, that no id was used twice, and that the log lost no record.
    void Check();

    /// The number of daemons that the supervisor has registered. A client that was killed in an
    /// attach leaves the number open.
    struct Registered {
        std::size_t atLeast = 0;
        std::size_t atMost = 0;
    };
    /// Ends the clients. Repeats each call in which a client was killed, and waits for its effect.
    [[nodiscard]] Registered Settle();

    /// Checks the whole log after the end of the supervisor and of the followers.
    void CheckLog(const Registered& registered);

private:
    [[nodiscard]] std::string Differences() const;
    void CheckIds();
    void CheckLinesOfDaemons();

    SupervisorProcess& supervisor_;
    const Fleet& fleet_;
    Clients& clients_;
    const Followers& followers_;
    HANDLE ranTwice_;
    Failures& failures_;
    std::map<std::string, std::size_t> attempts_; // at the last check, by name of the daemon
};

} // namespace vqrx::test
