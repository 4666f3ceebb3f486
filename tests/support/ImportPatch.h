#pragma once

#include <windows.h>

#include <atomic>
#include <type_traits>

namespace vqrx::test {

/// Patch: replaces one Windows function in this test program until the destructor runs. A test uses
/// a patch for a failure that the host never produces. On Windows the patch changes the import
/// table, so it affects calls from the program's own code and not calls inside system libraries. In
/// a native build it replaces a fake function (tests/fake_windows/README.md lists these functions).
/// Other threads may call the function while a patch is made: the replacement must then know the
/// original already. So a replacement that calls the original gets it through the third argument.
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
    ImportPatch(const char* function, void* replacement)
        : ImportPatch(function)
    {
        Put(replacement);
    }

    /// Replaces the function. Stores the original before that, so that the replacement can call it
    /// from the first moment on.
    /// @param original  stays valid after the patch has gone; several patches may share it
    template <typename Function>
    ImportPatch(const char* function, std::type_identity_t<Function>* replacement,
                Function*& original)
        : ImportPatch(function)
    {
        original = reinterpret_cast<Function*>(original_);
        Put(reinterpret_cast<void*>(replacement));
    }
    template <typename Function>
    ImportPatch(const char* function, std::type_identity_t<Function>* replacement,
                std::atomic<Function*>& original)
        : ImportPatch(function)
    {
        original = reinterpret_cast<Function*>(original_);
        Put(reinterpret_cast<void*>(replacement));
    }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    ~ImportPatch();

private:
    explicit ImportPatch(const char* function);
    void Put(void* function) noexcept;

    void* slot_;
    void* original_;
};

} // namespace vqrx::test
