#pragma once

#include "ProcessEnd.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <optional>

namespace vqrx::app::v0 {

/// The main thread's membership in COM. The destructor gives the membership back.
/// COM may block in that call for ever, for example because of another process. The process would
/// then stay behind: it supervises nothing, keeps its files open and is still listed as running.
/// After a limit this class therefore ends the process. Records that are still queued in the logger
/// may then be lost; nothing else is left to do at that time.
class BoundedApartment {
public:
    /// Joins the multithreaded apartment on the calling thread.
    /// @param limitMs  milliseconds that COM may take to let the thread go
    /// @param end      called on another thread after the limit, with the exit code: 0, or 1 if an
    ///                 exception is passing
    /// @throws COMException  COM refuses
    explicit BoundedApartment(DWORD limitMs = kLimitMs, ProcessEnd end = EndThisProcess);
    BoundedApartment(const BoundedApartment&) = delete;
    BoundedApartment& operator=(const BoundedApartment&) = delete;
    /// On the thread that called the constructor.
    ~BoundedApartment();

private:
    // The clients' calls have ended before; COM itself needs a few milliseconds.
    static constexpr DWORD kLimitMs = 10000;

    static void CALLBACK OnLimit(void* self, BOOLEAN) noexcept;

    DWORD limitMs_;
    ProcessEnd end_;
    UINT exitCode_ = 0;
    std::optional<system::com::v1::ComApartment> apartment_{std::in_place};
};

} // namespace vqrx::app::v0
