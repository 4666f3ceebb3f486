#pragma once

#include "RingFile.h"

#include <windows.h>

#include <cstddef>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace vqrx::test {

/// Number of log records of each kind for one daemon.
struct DaemonLines {
    unsigned firstStarts = 0; ///< at level 2
    unsigned restarts = 0;    ///< at level 1
    unsigned stops = 0;
    unsigned attaches = 0;
    unsigned detaches = 0;
    DWORD processId = 0; ///< in the last start or attach
};

/// Totals of all log records so far. Any thread may call.
class LogLedger {
public:
    void Add(const std::vector<RingRecord>& records);

    [[nodiscard]] DaemonLines Of(DWORD daemonId) const;
    /// Returns each id with more than one first start or attach.
    [[nodiscard]] std::set<DWORD> IdsUsedTwice() const;
    /// Returns the number of records with exactly this text.
    [[nodiscard]] std::size_t Count(const std::string& text) const;
    [[nodiscard]] std::size_t Records() const;
    [[nodiscard]] std::size_t Restarts() const;
    /// Returns the number of process handles that the supervisor must have open: one for each start
    /// and each attach, minus one for each stop and each detach. A restart keeps the handle of the
    /// ended process open.
    [[nodiscard]] long long ProcessHandles() const;
    [[nodiscard]] std::string LastText() const;

private:
    mutable std::mutex mutex_;
    std::map<DWORD, DaemonLines> daemons_;
    std::map<std::string, std::size_t> texts_; // records without an id, and other texts
    std::size_t records_ = 0;
    std::size_t restarts_ = 0;
    long long handles_ = 0;
    std::string last_;
};

} // namespace vqrx::test
