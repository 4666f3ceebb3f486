#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vqrx::test::anomaly {

inline constexpr std::size_t kMaxFrames = 14;

/// A way through this program to a function that can fail: the function, and the places in the
/// program that called each other on the way to it, the last one first. One path may be taken
/// often.
struct CallPath {
    std::uint64_t key = 0; ///< a hash of the rest; the same in each process of one build
    const char* name = ""; ///< the function, as ThunkedCall has it
    std::uint32_t frames[kMaxFrames] = {};       ///< offsets of the places in this program
    std::uint32_t depth = 0;                     ///< how many of the frames are used
    std::atomic<std::uint32_t> calls = 0;        ///< how often the path was taken since ForgetCalls
    std::atomic<std::uint32_t> failedAnyway = 0; ///< how many of these calls failed by themselves
};

/// Returns the path that leads to a call. The same path gives the same object. Any thread;
/// allocates nothing. Only frames in this program count: a path leads through Windows' own
/// functions.
/// @param name    name of the function, which must live as long as the process
/// @param caller  where the call returns to
/// @param root    an address on the thread's stack: the functions that lie beyond it do not belong
///                to the path. Null: the path begins where the thread does
[[nodiscard]] CallPath& PathTo(const char* name, const void* caller, const void* root) noexcept;

/// Returns the offset of an address of this program from its beginning.
[[nodiscard]] std::uint32_t OffsetInProgram(std::uint64_t address) noexcept;

/// Walks from a place to the first function of its thread and notes the frames in this program.
/// Allocates nothing.
/// @param context  of a thread; changed. CONTEXT of windows.h
/// @param frames   room for `room` offsets
/// @return how many frames were noted
[[nodiscard]] std::uint32_t FramesFrom(void* context, std::uint32_t* frames,
                                       std::uint32_t room) noexcept;

/// Sets the counts of all paths to 0.
void ForgetCalls() noexcept;

/// Returns the paths that were taken since ForgetCalls.
[[nodiscard]] std::vector<const CallPath*> TakenPaths();

} // namespace vqrx::test::anomaly
