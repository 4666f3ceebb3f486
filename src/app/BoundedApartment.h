#pragma once

#include "ProcessEnd.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <optional>

namespace vqrx::app::v0 {

/// The main thread's membership in COM, given back within a limit. By then everything else is done
/// and logged: where COM does not let go, the process ends without it instead of staying behind,
/// neither at work nor gone, with its file in use and its place in the operator's list.
class BoundedApartment {
public:
    /// @param limitMs  how long COM may take to let the thread go, milliseconds
    /// @param end      called on another thread when the limit has passed, with the process's exit
    ///                 code: 0, or 1 while an exception passes
    explicit BoundedApartment(DWORD limitMs = kLimitMs, ProcessEnd end = EndThisProcess);
    BoundedApartment(const BoundedApartment&) = delete;
    BoundedApartment& operator=(const BoundedApartment&) = delete;
    ~BoundedApartment();

private:
    /// Calls that are under way have been waited for; what is left is a matter of milliseconds.
    static constexpr DWORD kLimitMs = 10000;

    static void CALLBACK OnLimit(void* self, BOOLEAN) noexcept;

    DWORD limitMs_;
    ProcessEnd end_;
    UINT exitCode_ = 0;
    std::optional<system::com::v1::ComApartment> apartment_{std::in_place};
};

} // namespace vqrx::app::v0
