#pragma once

#include <windows.h>

namespace vqrx::test {

/// Patch: replaces one Windows function in this test program until the destructor runs. A test uses
/// a patch for a failure that the host never produces. On Windows the patch changes the import
/// table, so it affects calls from the program's own code and not calls inside system libraries. In
/// a native build it replaces a fake function (tests/fake_windows/README.md lists these functions).
/// If another thread may call the replacement and the replacement calls the original, take the
/// original's address from GetProcAddress before you make the patch: Original() comes too late.
class ImportPatch {
public:
    /// @param function     exported name, e.g. "CreateProcessA"
    /// @param replacement  function with the same type
    /// @throws std::runtime_error if the program does not import the function
    template <typename Function>
    ImportPatch(const char* function, Function* replacement)
        : ImportPatch(function, reinterpret_cast<void*>(replacement))
    {
    }
    ImportPatch(const char* function, void* replacement);
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    ~ImportPatch();

    /// Returns the replaced function, so that the replacement can call it.
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
