#include "ReportTime.h"

#include "TimeText.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;
constexpr std::int64_t kMostTicks = 6;
constexpr std::int64_t kLatest = 253402300799999; // milliseconds: the end of the year 9999

std::optional<int> Number(std::string_view field)
{
    if (field.starts_with(' ')) {
        field.remove_prefix(1);
    }
    int number = 0;
    const char* const end = field.data() + field.size();
    const auto [rest, error] = std::from_chars(field.data(), end, number);
    return error == std::errc{} && rest == end ? std::optional(number) : std::nullopt;
}

std::optional<unsigned> Month(std::string_view name)
{
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const std::size_t place = months.find(name);
    if (name.size() != 3 || place == std::string_view::npos || place % 3 != 0) {
        return std::nullopt;
    }
    return static_cast<unsigned>(place / 3 + 1);
}

std::int64_t Floor(std::int64_t value, std::int64_t step)
{
    const std::int64_t quotient = value / step;
    return (value % step < 0 ? quotient - 1 : quotient) * step;
}

bool IsInCalendar(std::int64_t timeMs)
{
    return timeMs >= 0 && timeMs <= kLatest - kDay;
}

} // namespace

std::optional<int> ZoneOffset(std::string_view date, std::int64_t timeMs)
{
    constexpr std::size_t length = 23;
    if (date.size() != length || !IsInCalendar(timeMs) || timeMs < 2 * kDay) {
        return std::nullopt;
    }
    const std::optional<unsigned> month = Month(date.substr(4, 3));
    const std::optional<int> day = Number(date.substr(8, 2));
    const std::optional<int> hour = Number(date.substr(11, 2));
    const std::optional<int> minute = Number(date.substr(14, 2));
    if (!month || !day || !hour || !minute) {
        return std::nullopt;
    }
    const auto utcDay = std::chrono::floor<std::chrono::days>(
        std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(timeMs)));
    // The date has no year. The local day is the UTC day, the day before it or the day after it.
    for (const int step : {0, -1, 1}) {
        const auto localDay = utcDay + std::chrono::days(step);
        const std::chrono::year_month_day local(localDay);
        if (static_cast<unsigned>(local.month()) != *month ||
            static_cast<unsigned>(local.day()) != static_cast<unsigned>(*day)) {
            continue;
        }
        const std::int64_t localMinutes = localDay.time_since_epoch().count() * (kDay / kMinute) +
                                          std::int64_t{*hour} * 60 + *minute;
        const std::int64_t offset = localMinutes - Floor(timeMs, kMinute) / kMinute;
        constexpr std::int64_t farthest = std::int64_t{14} * 60;
        if (offset % 15 == 0 && offset >= -farthest && offset <= farthest) {
            return static_cast<int>(offset);
        }
    }
    return std::nullopt;
}

std::string ZoneText(int offsetMinutes)
{
    if (offsetMinutes == 0) {
        return "UTC";
    }
    const int distance = std::abs(offsetMinutes);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "UTC%c%02d:%02d", offsetMinutes < 0 ? '-' : '+',
                  distance / 60, distance % 60);
    return text.data();
}

std::string LocalText(std::int64_t timeMs, int offsetMinutes)
{
    if (!IsInCalendar(timeMs)) {
        return std::to_string(timeMs) + " ms";
    }
    std::string text = IsoTime(timeMs + offsetMinutes * kMinute).value_or(std::string(24, '?'));
    text.resize(19);
    text[10] = ' ';
    return text;
}

std::string DurationText(std::int64_t durationMs)
{
    struct Unit {
        std::int64_t length;
        const char* name;
        std::int64_t minor;
        const char* minorName;
    };
    constexpr std::array<Unit, 3> units = {{{kDay, " d", kHour, " h"},
                                            {kHour, " h", kMinute, " min"},
                                            {kMinute, " min", kSecond, " s"}}};
    for (const Unit& unit : units) {
        if (durationMs >= unit.length) {
            std::string text = std::to_string(durationMs / unit.length) + unit.name;
            const std::int64_t minor = durationMs % unit.length / unit.minor;
            return minor == 0 ? text : text + " " + std::to_string(minor) + unit.minorName;
        }
    }
    return durationMs >= kSecond ? std::to_string(durationMs / kSecond) + " s"
                                 : std::to_string(durationMs) + " ms";
}

std::vector<Tick> AxisTicks(std::int64_t beginMs, std::int64_t endMs, int offsetMinutes)
{
    constexpr std::array<std::int64_t, 23> steps = {
        kSecond,     2 * kSecond, 5 * kSecond,  10 * kSecond, 30 * kSecond, kMinute,
        2 * kMinute, 5 * kMinute, 10 * kMinute, 30 * kMinute, kHour,        2 * kHour,
        3 * kHour,   6 * kHour,   12 * kHour,   kDay,         2 * kDay,     5 * kDay,
        10 * kDay,   30 * kDay,   90 * kDay,    365 * kDay,   3650 * kDay};
    if (!IsInCalendar(beginMs) || !IsInCalendar(endMs) || endMs < beginMs) {
        return {};
    }
    std::int64_t step = steps.back();
    for (const std::int64_t candidate : steps) {
        if ((endMs - beginMs) / candidate <= kMostTicks) {
            step = candidate;
            break;
        }
    }
    std::vector<Tick> ticks;
    const std::int64_t offset = offsetMinutes * kMinute;
    for (std::int64_t local = Floor(beginMs + offset + step - 1, step);
         local - offset <= endMs && ticks.size() <= kMostTicks; local += step) {
        const std::string text = LocalText(local - offset, offsetMinutes);
        std::string label = text.substr(11, step < kMinute ? 8 : 5);
        if (step >= kDay || (step >= kMinute && label == "00:00")) { // midnight: show the date
            label = step < 365 * kDay ? text.substr(5, 5) : text.substr(0, 7);
        }
        ticks.push_back({local - offset, label});
    }
    return ticks;
}

} // namespace vqrx::client::v0
