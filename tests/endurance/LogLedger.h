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

/// What the log has said of one daemon.
struct DaemonLines {
    unsigned firstStarts = 0; ///< at level 2
    unsigned restarts = 0;    ///< at level 1
    unsigned stops = 0;
    unsigned attaches = 0;
    unsigned detaches = 0;
    DWORD processId = 0; ///< of the last start or attach
};

/// The log as it has been so far, added up. Any thread.
class LogLedger {
public:
    void Add(const std::vector<RingRecord>& records);

    DaemonLines Of(DWORD daemonId) const;
    /// The ids under which more than one daemon was started for the first time or attached.
    std::set<DWORD> IdsUsedTwice() const;
    /// How many records have this very text.
    std::size_t Count(const std::string& text) const;
    std::size_t Records() const;
    std::size_t Restarts() const;
    /// How many process handles the supervisor has: one for every process that it started or
    /// attached, less those that it closed when it stopped or detached a daemon. The handles of
    /// ended processes stay open, as they have to.
    long long ProcessHandles() const;
    std::string LastText() const;

private:
    mutable std::mutex mutex_;
    std::map<DWORD, DaemonLines> daemons_;
    std::map<std::string, std::size_t> texts_; // of lines without an id
    std::size_t records_ = 0;
    std::size_t restarts_ = 0;
    long long handles_ = 0;
    std::string last_;
};

} // namespace vqrx::test
