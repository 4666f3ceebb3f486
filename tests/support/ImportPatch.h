#pragma once

#include <windows.h>

namespace vqrx::test {

/// Replaces one imported function of this test program for as long as it lives, to provoke faults
/// that the host never produces. Works on the import table, so only calls made by the program's own
/// code are diverted; calls within system libraries are not. In a native build the functions are
/// those of tests/native_win32.
/// Made and destroyed while no other thread calls the function.
class ImportPatch {
public:
    /// @param function     exported name, e.g. "CreateProcessA"
    /// @param replacement  of the very same type as the function
    /// @throws std::runtime_error when the program does not import the function
    template <typename Function>
    ImportPatch(const char* function, Function* replacement)
        : ImportPatch(function, reinterpret_cast<void*>(replacement))
    {
    }
    ImportPatch(const char* function, void* replacement);
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    ~ImportPatch();

    /// The function that stood there before, to pass calls on.
    template <typename Function>
    Function* Original() const noexcept
    {
        return reinterpret_cast<Function*>(original_);
    }

private:
    void* slot_;
    void* original_;
};

} // namespace vqrx::test
