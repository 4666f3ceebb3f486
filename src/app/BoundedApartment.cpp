#include "BoundedApartment.h"

namespace vqrx::app::v0 {

BoundedApartment::BoundedApartment(DWORD limitMs, ProcessEnd end)
    : limitMs_(limitMs)
    , end_(end)
{
}

BoundedApartment::~BoundedApartment()
{
    exitCode_ = ExitCodeOfNow();
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
    apartment.end_(apartment.exitCode_);
}

} // namespace vqrx::app::v0
