#include "BoundedApartment.h"

namespace vqrx::app::v0 {

BoundedApartment::BoundedApartment(log::i_logger::v0::ILogger& logger, ForcedEnd& forcedEnd,
                                   DWORD limitMs)
    : logger_(logger)
    , forcedEnd_(forcedEnd)
    , limitMs_(limitMs)
{
}

BoundedApartment::~BoundedApartment()
{
    HANDLE timer = nullptr;
    const BOOL armed =
        CreateTimerQueueTimer(&timer, nullptr, OnLimit, this, limitMs_, 0, WT_EXECUTEONLYONCE);
    apartment_.reset();
    if (armed) {
        // INVALID_HANDLE_VALUE: waits for OnLimit if it runs at this moment.
        DeleteTimerQueueTimer(nullptr, timer, INVALID_HANDLE_VALUE);
    }
}

void CALLBACK BoundedApartment::OnLimit(void* self, BOOLEAN) noexcept
{
    const BoundedApartment& apartment = *static_cast<BoundedApartment*>(self);
    apartment.forcedEnd_.Now(apartment.logger_,
                             "Shutdown given up: COM has not released the main thread in time");
}

} // namespace vqrx::app::v0
