#pragma once

#include "sync_ptr/CriticalSection.h"

#include <utility>

namespace vqrx::system::sync_ptr::v1 {

/// A value together with the critical section that guards it. The value is reachable only through a
/// Hold, so no code can use it without the lock. Costs no allocation and no virtual call.
/// Must outlive every Hold.
template <typename T>
class Guarded {
public:
    /// One hold of the lock: entered when made, left when destroyed, both on the same thread. Reads
    /// like a pointer to the value. References to the value must not outlive the hold.
    class Hold {
    public:
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        ~Hold() = default;

        /// On a temporary hold the lock is held to the end of the full expression.
        T* operator->() const noexcept { return &value_; }

        /// Not on a temporary hold: the reference would outlive it.
        T& operator*() const& noexcept { return value_; }
        T& operator*() const&& = delete;

    private:
        friend class Guarded;
        Hold(CriticalSection& section, T& value) noexcept
            : hold_(section)
            , value_(value)
        {
        }

        const CriticalSectionHold hold_;
        T& value_;
    };

    /// Makes the lock, then the value from the arguments.
    /// @throws ATL::CAtlException if the lock cannot be made; what the value's constructor throws
    template <typename... Arguments>
    explicit Guarded(Arguments&&... arguments)
        : value_(std::forward<Arguments>(arguments)...)
    {
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
    ~Guarded() = default;

    /// Waits until no other thread holds the lock. A thread that holds it already gets a further
    /// hold at once. Any thread.
    [[nodiscard]] Hold Lock() noexcept { return Hold(section_, value_); }

private:
    CriticalSection section_; // first: destroyed after the value
    T value_;
};

} // namespace vqrx::system::sync_ptr::v1
