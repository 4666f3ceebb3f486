#pragma once

#include "Record.h"
#include "RecorderLock.h"
#include "ScanSummary.h"

#include <cstdint>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// The bounds of a folder of recorded records.
struct RecordFolderLimits {
    std::uint64_t fileBytes = std::uint64_t{16} * 1024 * 1024; ///< of one file
    std::int64_t fileMs = std::int64_t{24} * 60 * 60 * 1000; ///< between its first and last record
    /// Of all files together. No file becomes larger than this, whatever fileBytes says.
    std::uint64_t folderBytes = std::uint64_t{1024} * 1024 * 1024;
};

/// Writes records into a folder of files. Each file holds lines as the log has them, in UTF-8, and
/// its name begins with a number that grows: "000012-2026-11-22T04-36-42.log", or
/// "000012-without-a-date.log" if the time has no date. Files with names of another form are not
/// touched. A line that begins with "#" is a remark. Holds the RecorderLock of the folder. Not for
/// use by several threads at once.
class RecordFolder {
public:
    /// Makes the folder, or continues an existing one. Removes the rest of a line that a power
    /// failure has torn.
    /// @param path    UTF-8
    /// @param waitMs  the longest wait for another recorder to leave the folder, milliseconds
    /// @throws std::runtime_error if the folder cannot be made or read, or if another recorder
    ///         writes into it
    RecordFolder(const std::string& path, const RecordFolderLimits& limits,
                 std::uint32_t waitMs = kRecorderPatienceMs);

    /// Returns the record that was added last, also by an earlier program; nothing if there is
    /// none.
    [[nodiscard]] const std::optional<Record>& Last() const noexcept { return last_; }

    /// Returns the newest records of the files, as many as a ring file can hold or more, in the
    /// order of writing.
    /// @throws std::runtime_error if a file cannot be read
    [[nodiscard]] std::vector<Record> Newest() const;

    /// Adds a record. Begins a new file if the present one is too large or too old, and removes the
    /// oldest files if all together are too large.
    /// @throws std::runtime_error if the file cannot be written
    void Add(const Record& record);

    /// Adds a remark, which readers skip. Does nothing if this remark is the last line already, or
    /// if no record was ever added.
    /// @param text  without a line end, not empty
    /// @throws std::runtime_error if the file cannot be written
    void AddRemark(std::string_view text);

    /// Hands everything that was added to the system.
    /// @throws std::runtime_error if the file cannot be written
    void Flush();

private:
    void Continue();
    void BeginFile(std::int64_t timeMs);
    void RemoveOldest();
    void Write(const std::string& line);

    std::string path_;
    RecordFolderLimits limits_;
    std::unique_ptr<RecorderLock> lock_; // taken before a file of the folder is read
    std::optional<Record> last_;
    std::string remark_;             // in the last line; empty: that is a record
    std::vector<std::string> names_; // of the files, the oldest first
    std::ofstream file_;
    std::uint64_t size_ = 0;   // of the present file
    std::int64_t firstMs_ = 0; // time of its first record
};

/// Returns whether a path leads to a folder.
[[nodiscard]] bool IsRecordFolder(const std::string& path);

/// Returns the paths of the files of a folder that a RecordFolder reads, continues or removes, the
/// oldest first. UTF-8.
/// @throws std::runtime_error "... cannot be read: ..." if the folder cannot be read
[[nodiscard]] std::vector<std::string> RecordFilesOf(const std::string& path);

/// Reads all records of a folder that a RecordFolder has written, in the order of writing. A line
/// without a line end, which a recorder may be writing, counts as torn. A file that a recorder
/// removes meanwhile is left out.
/// @param path  UTF-8
/// @throws std::runtime_error "... cannot be read: ..." if the folder or a file cannot be read, or
///         the folder has no such file
[[nodiscard]] ScanSummary ReadRecordFolder(const std::string& path, const RecordCallback& onRecord);

/// Writes a record as a line of the log, without a line end.
[[nodiscard]] std::string LineOf(const Record& record);

} // namespace vqrx::client::v0
