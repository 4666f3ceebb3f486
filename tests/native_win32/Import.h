#pragma once

#include <atomic>

namespace native_win32 {

/// A function of the system that a test can replace, as it replaces an entry of the import table on
/// Windows. The slot is read without ordering, so that it hides no race of the program under test.
class ImportSlot {
public:
    ImportSlot(const char* name, void* function) noexcept;
    ImportSlot(const ImportSlot&) = delete;
    ImportSlot& operator=(const ImportSlot&) = delete;

    void* Exchange(void* function) noexcept
    {
        return function_.exchange(function, std::memory_order_relaxed);
    }

    /// Null when this program does not use the function.
    static ImportSlot* Find(const char* name) noexcept;

protected:
    void* Function() const noexcept { return function_.load(std::memory_order_relaxed); }

private:
    const char* name_;
    std::atomic<void*> function_;
    ImportSlot* next_;
};

template <typename Result, typename... Arguments>
class Import : public ImportSlot {
public:
    Import(const char* name, Result (*function)(Arguments...)) noexcept
        : ImportSlot(name, reinterpret_cast<void*>(function))
    {
    }
    Result operator()(Arguments... arguments) const
    {
        return reinterpret_cast<Result (*)(Arguments...)>(Function())(arguments...);
    }
};

} // namespace native_win32

/// Defines the system function `result name parameters`, which does what is written behind it until
/// a test replaces it: DM_IMPORT(BOOL, SetEvent, (HANDLE event), (event)) { ... }
#define DM_IMPORT(result, name, parameters, arguments)                                             \
    static result Real##name parameters;                                                           \
    static const native_win32::Import import##name{#name, &Real##name};                            \
    result name parameters                                                                         \
    {                                                                                              \
        return import##name arguments;                                                             \
    }                                                                                              \
    static result Real##name parameters
