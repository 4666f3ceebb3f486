#pragma once

#include <atomic>

namespace fake_windows {

/// Slot of one fake function. An ImportPatch replaces the function in the slot, as it replaces an
/// entry of the import table on Windows. The slot is read without memory order, so ThreadSanitizer
/// still sees the races of the program under test.
class PatchableFunction {
public:
    PatchableFunction(const char* name, void* function) noexcept;
    PatchableFunction(const PatchableFunction&) = delete;
    PatchableFunction& operator=(const PatchableFunction&) = delete;

    void Replace(void* function) noexcept { function_.store(function, std::memory_order_relaxed); }
    [[nodiscard]] void* Function() const noexcept
    {
        return function_.load(std::memory_order_relaxed);
    }

    /// Returns the slot of the function. Returns null if the program does not contain the function.
    [[nodiscard]] static PatchableFunction* Find(const char* name) noexcept;

private:
    const char* name_;
    std::atomic<void*> function_;
    PatchableFunction* next_;
};

template <typename Result, typename... Arguments>
class TypedFunction : public PatchableFunction {
public:
    TypedFunction(const char* name, Result (*function)(Arguments...)) noexcept
        : PatchableFunction(name, reinterpret_cast<void*>(function))
    {
    }
    Result operator()(Arguments... arguments) const
    {
        return reinterpret_cast<Result (*)(Arguments...)>(Function())(arguments...);
    }
};

} // namespace fake_windows

/// Defines a fake function that a test can replace. The body follows the macro:
/// DM_FAKE(BOOL, SetEvent, (HANDLE event), (event)) { ... }
#define DM_FAKE(result, name, parameters, arguments)                                               \
    static result Default##name parameters;                                                        \
    static const fake_windows::TypedFunction slotOf##name{#name, &Default##name};                  \
    result name parameters                                                                         \
    {                                                                                              \
        return slotOf##name arguments;                                                             \
    }                                                                                              \
    static result Default##name parameters
