#pragma once

#include "LogLedger.h"

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

namespace vqrx::test {

/// Two readers of the log file. Each reads on its own thread, with a pause of 50 ms after each
/// read.
class Followers {
public:
    /// Milliseconds between two reads of one reader.
    static constexpr unsigned kPauseMs = 50;

    explicit Followers(const std::string& path);
    Followers(const Followers&) = delete;
    Followers& operator=(const Followers&) = delete;
    ~Followers() { Stop(); }

    /// Lets both readers read the file once more and waits for the end of their threads.
    void Stop();
    /// Totals of the first reader.
    [[nodiscard]] const LogLedger& Ledger() const { return ledger_; }
    /// Totals of the second reader.
    [[nodiscard]] const LogLedger& Other() const { return other_; }
    /// Returns the failure of a reader; empty if there is none.
    [[nodiscard]] std::string Failure() const;
    [[nodiscard]] unsigned Wraps() const { return wraps_; }

private:
    void Follow(const std::string& path, LogLedger& ledger);

    LogLedger ledger_;
    LogLedger other_;
    std::atomic<bool> stop_ = false;
    std::atomic<unsigned> wraps_ = 0;
    mutable std::mutex mutex_;
    std::string failure_; // guarded by mutex_
    std::thread first_;
    std::thread second_;
};

} // namespace vqrx::test
