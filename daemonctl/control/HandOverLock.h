#pragma once

#include "Reporter.h"
#include "win32/UniqueHandle.h"

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// The longest time, in milliseconds, that one hand-over waits for another one.
inline constexpr std::uint64_t kHandOverPatienceMs = 120000;

/// Lets one program at a time hand daemons over or apply a fleet file. Two programs at once, such
/// as the guard and an operator, would both read a log in which a process is no daemon. Both would
/// attach it, and the supervisor would start its program twice when the process ends.
///
/// A program holds the lock as long as the object exists, by a file that no second program can
/// open. Windows closes and deletes the file with the process, however the process ends. A user who
/// may not write to the folder of the logs gets no lock, and is not kept out.
class HandOverLock {
public:
    /// Waits at most `limitMs` milliseconds until no other program holds the lock.
    /// @param file      UTF-8; see HandOverLockPath()
    /// @param reporter  its `waiting` gets a line if another program holds the lock, its `failed`
    ///                  one if the file cannot be made: the program then goes on without the lock
    /// @throws std::runtime_error if another program still holds the lock after that
    HandOverLock(const std::string& file, const Reporter& reporter, std::uint64_t limitMs);

private:
    system::win32::v1::UniqueKernelHandle file_;
};

} // namespace vqrx::client::v0
