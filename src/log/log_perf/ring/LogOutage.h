#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// Counts the records that the log file lacks because it could not be written, and says when an
/// outage is to be reported: once when it begins, once when it is over. Pure; one thread.
class LogOutage {
public:
    /// Call it before each record is written. The record counts as lost until Written is called.
    void Begin() noexcept { ++lost_; }

    /// Number of records that were lost before the one that was begun last.
    [[nodiscard]] std::uint64_t LostBefore() const noexcept { return lost_ - 1; }

    /// The line that tells a reader of the file how many records are missing before it.
    /// @param file  name of the log file
    /// @throws std::bad_alloc
    [[nodiscard]] std::string NoteFor(const std::string& file) const;

    /// Call it after the note (NoteFor) was written to the file.
    void Noted() noexcept;

    /// Call it after the record that was begun last was written to the file. If records before it
    /// were lost, the outage is over.
    void Written() noexcept;

    /// Call it if the record that was begun last could not be written. The outage begins, unless
    /// one is under way.
    /// @param error  value of errno after the call that failed; 0 if unknown
    void Failed(int error) noexcept;

    /// Call it if somebody has reported the beginning of the outage. Failed then does not report
    /// it.
    void BeginningIsKnown() noexcept { known_ = true; }

    /// Call it after the file of the outage was set aside, and a new one begun.
    /// @param path  under which the file is kept; for the report
    void KeptAs(std::string path) noexcept;

    /// Returns the report that is due, and forgets it.
    /// @param file  name of the log file, for the report
    /// @throws std::bad_alloc; the report is then still due
    [[nodiscard]] std::optional<std::string> TakeReport(const std::string& file);

private:
    enum class Due { kNothing, kBeginning, kEnd };

    std::uint64_t lost_ = 0;    // records, since the last one that was written
    std::uint64_t missing_ = 0; // records that the present outage cost before those
    std::uint64_t cost_ = 0;    // records that the last outage cost; for Due::kEnd
    int error_ = 0;             // for Due::kBeginning
    bool known_ = false;        // the beginning of the outage was reported
    Due due_ = Due::kNothing;
    std::string keptAs_; // empty: the file of the outage is still the log file
};

} // namespace vqrx::log::log_perf::v2
