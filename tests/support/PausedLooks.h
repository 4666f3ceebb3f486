#pragma once

#include <windows.h>

#include <algorithm>

namespace vqrx::test {

/// Pauses between two looks at something that has no event to wait for: a list of processes, the
/// state of a service, a file that another process writes. The pause is five times as long as the
/// look took, at least 10 ms and at most 250 ms. Such looks cost much under Wine: without a longer
/// pause they slow down what they wait for.
class PausedLooks {
public:
    /// Begins with the first look.
    /// @param mostMs  milliseconds after which the looks are to end
    explicit PausedLooks(ULONGLONG mostMs)
        : deadline_(GetTickCount64() + mostMs)
    {
    }

    [[nodiscard]] bool IsOver() const { return GetTickCount64() > deadline_; }

    /// Sleeps; then the next look begins.
    void Pause()
    {
        constexpr ULONGLONG kLeastMs = 10;
        constexpr ULONGLONG kMostMs = 250;
        const ULONGLONG lookMs = GetTickCount64() - lookBegan_;
        Sleep(static_cast<DWORD>(std::clamp(5 * lookMs, kLeastMs, kMostMs)));
        lookBegan_ = GetTickCount64();
    }

private:
    ULONGLONG deadline_;
    ULONGLONG lookBegan_ = GetTickCount64();
};

} // namespace vqrx::test
