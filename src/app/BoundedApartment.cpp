#include "BoundedApartment.h"

#include <exception>

namespace vqrx::app::v0 {

BoundedApartment::BoundedApartment(DWORD limitMs, End end)
    : limitMs_(limitMs)
    , end_(end)
{
}

BoundedApartment::~BoundedApartment()
{
    exitCode_ = std::uncaught_exceptions() > 0 ? 1 : 0;
    HANDLE timer = nullptr;
    const BOOL armed =
        CreateTimerQueueTimer(&timer, nullptr, OnLimit, this, limitMs_, 0, WT_EXECUTEONLYONCE);
    apartment_.reset();
    if (armed) {
        DeleteTimerQueueTimer(nullptr, timer, INVALID_HANDLE_VALUE); // a call under way ends first
    }
}

// Not ExitProcess: it would ask the libraries to clean up, COM's among them.
void BoundedApartment::EndProcess(UINT exitCode) noexcept
{
    TerminateProcess(GetCurrentProcess(), exitCode);
}

void CALLBACK BoundedApartment::OnLimit(void* self, BOOLEAN) noexcept
{
    const BoundedApartment& apartment = *static_cast<BoundedApartment*>(self);
    apartment.end_(apartment.exitCode_);
}

} // namespace vqrx::app::v0
