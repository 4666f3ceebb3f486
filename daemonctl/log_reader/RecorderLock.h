#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace vqrx::client::v0 {

/// The longest time, in milliseconds, that a recorder waits for another one to leave its folder.
inline constexpr std::uint32_t kRecorderPatienceMs = 5000;

/// Lets one recorder at a time write into a folder. Two recorders would write each record twice,
/// and each could cut the line that the other one is writing.
///
/// A recorder holds the lock by a file in the folder, "recorder.lock". The system releases the lock
/// with the process, however the process ends. Windows then also deletes the file. On other systems
/// the file of a process that was killed stays, and keeps nobody out.
class RecorderLock {
public:
    /// Waits at most `limitMs` milliseconds until no other recorder holds the lock: a recorder that
    /// was terminated may not be gone yet.
    /// @param folder  UTF-8; it must exist
    /// @throws std::runtime_error if another recorder still holds the lock after that, or if the
    ///         file cannot be made
    RecorderLock(const std::string& folder, std::uint32_t limitMs);
    RecorderLock(const RecorderLock&) = delete;
    RecorderLock& operator=(const RecorderLock&) = delete;

    /// Releases the lock and removes the file.
    ~RecorderLock();

private:
    struct File; // what holds the file open, on each system
    std::unique_ptr<File> file_;
};

} // namespace vqrx::client::v0
