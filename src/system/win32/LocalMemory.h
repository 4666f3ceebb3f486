#pragma once

#include <windows.h>

#include <memory>

namespace vqrx::system::win32::v1 {

/// Frees memory of the local heap; the deleter of UniqueLocalMemory.
struct LocalFreeDeleter {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};

/// Owns a block that a system call allocated and that its caller frees with LocalFree, such as the
/// array of CommandLineToArgvW.
/// @tparam T  element type of the block; the elements themselves are not destroyed
template <typename T>
using UniqueLocalMemory = std::unique_ptr<T, LocalFreeDeleter>;

} // namespace vqrx::system::win32::v1
