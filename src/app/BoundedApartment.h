#pragma once

#include "ForcedEnd.h"
#include "ILogger.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <optional>

namespace vqrx::app::v0 {

/// The main thread's membership in COM. The destructor gives the membership back.
/// COM may block in that call for ever, for example because of another process. The process would
/// then stay behind: it supervises nothing, keeps its files open and is still listed as running.
/// After a limit this class therefore ends the process.
class BoundedApartment {
public:
    /// Joins the multithreaded apartment on the calling thread.
    /// @param logger     borrowed; gets the reason of a forced end
    /// @param forcedEnd  borrowed; called on another thread after the limit
    /// @param limitMs    milliseconds that COM may take to let the thread go
    /// @throws COMException  COM refuses
    BoundedApartment(log::i_logger::v0::ILogger& logger, ForcedEnd& forcedEnd,
                     DWORD limitMs = kLimitMs);
    BoundedApartment(const BoundedApartment&) = delete;
    BoundedApartment& operator=(const BoundedApartment&) = delete;
    /// On the thread that called the constructor.
    ~BoundedApartment();

private:
    // The clients' calls have ended before; COM itself needs a few milliseconds.
    static constexpr DWORD kLimitMs = 10000;

    static void CALLBACK OnLimit(void* self, BOOLEAN) noexcept;

    log::i_logger::v0::ILogger& logger_;
    ForcedEnd& forcedEnd_;
    DWORD limitMs_;
    std::optional<system::com::v1::ComApartment> apartment_{std::in_place};
};

} // namespace vqrx::app::v0
