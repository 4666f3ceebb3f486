#pragma once

#include <cstdint>

/// The secret value of GCC's stack protector. Each protected function keeps it behind its buffers,
/// and compares it before it returns. A constructor of this program sets it before main.
extern "C" std::uintptr_t __stack_chk_guard; // NOLINT(bugprone-reserved-identifier): GCC's name

namespace vqrx::cpp_utils::stack_guard::v1 {

/// Values that differ from start to start of a program.
struct StartValues {
    std::uint64_t time = 0;    ///< of the system
    std::uint64_t counter = 0; ///< of the processor or the system, the finest one
    std::uint64_t process = 0; ///< ids of the process and of its first thread
    std::uint64_t address = 0; ///< where Windows put the stack and the program
};

/// Mixes the values into a secret value. Pure. The lowest byte of the result is 0, so that a text
/// that overruns its buffer cannot contain the value.
[[nodiscard]] std::uintptr_t MixStackGuard(const StartValues& values) noexcept;

} // namespace vqrx::cpp_utils::stack_guard::v1
