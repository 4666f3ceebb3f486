#include "TimeScale.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vqrx::client::v0 {
namespace {

std::string CssPercent(double share)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f%%", share * 100);
    return text.data();
}

} // namespace

TimeScale::TimeScale(std::int64_t beginMs, std::int64_t endMs) noexcept
    : begin_(static_cast<double>(beginMs))
    , span_(std::max(1.0, static_cast<double>(endMs) - begin_))
{
}

double TimeScale::Place(std::int64_t timeMs) const noexcept
{
    return std::clamp((static_cast<double>(timeMs) - begin_) / span_, 0.0, 1.0);
}

std::string TimeScale::PlaceText(std::int64_t timeMs) const
{
    return CssPercent(Place(timeMs));
}

std::string TimeScale::WidthText(std::int64_t beginMs, std::int64_t endMs) const
{
    const double width = (static_cast<double>(endMs) - static_cast<double>(beginMs)) / span_;
    return CssPercent(std::clamp(width, 0.0, 1.0));
}

} // namespace vqrx::client::v0
