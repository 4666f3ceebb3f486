#pragma once

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// Maps times to places on the report's time axis. Times are milliseconds since 1970, UTC; any
/// values are allowed.
class TimeScale {
public:
    /// @param beginMs, endMs  the ends of the axis
    TimeScale(std::int64_t beginMs, std::int64_t endMs) noexcept;

    /// Returns the place of a time: 0 for the beginning of the axis, 1 for its end. Times outside
    /// the axis give 0 or 1.
    [[nodiscard]] double Place(std::int64_t timeMs) const noexcept;

    /// Returns Place in percent, as CSS and SVG write it: "12.500%".
    [[nodiscard]] std::string PlaceText(std::int64_t timeMs) const;

    /// Returns the length of an interval in percent of the axis: "12.500%". At most 100; 0 if it
    /// ends before it begins. Parts outside the axis count.
    [[nodiscard]] std::string WidthText(std::int64_t beginMs, std::int64_t endMs) const;

private:
    double begin_;
    double span_; // at least 1 ms
};

} // namespace vqrx::client::v0
