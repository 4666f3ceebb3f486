#include "TimeText.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

constexpr std::int64_t kMsPerSecond = 1000;
constexpr std::int64_t kSecondsPerDay = std::int64_t{24} * 60 * 60;
constexpr std::int64_t kMostDays = 8000000; // far beyond the calendar's last year

struct Clock {
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

std::optional<int> TakeDigits(std::string_view& text, std::size_t count)
{
    int value = 0;
    if (text.size() < count) {
        return std::nullopt;
    }
    for (std::size_t index = 0; index < count; ++index) {
        if (text[index] < '0' || text[index] > '9') {
            return std::nullopt;
        }
        value = value * 10 + (text[index] - '0');
    }
    text.remove_prefix(count);
    return value;
}

bool Take(std::string_view& text, char character)
{
    if (!text.starts_with(character)) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

// ".1" is 100 ms; what is finer than a millisecond is dropped.
bool TakeFraction(std::string_view& text, int& millisecond)
{
    constexpr std::array<int, 3> weights = {100, 10, 1};
    std::size_t digits = 0;
    while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
        millisecond += digits < weights.size() ? weights.at(digits) * (text.front() - '0') : 0;
        text.remove_prefix(1);
        ++digits;
    }
    return digits != 0;
}

// "03:52", "03:52:36", "03:52:36.123"
std::optional<Clock> TakeClock(std::string_view& text)
{
    Clock clock;
    const std::optional<int> hour = TakeDigits(text, 2);
    if (!hour || !Take(text, ':')) {
        return std::nullopt;
    }
    const std::optional<int> minute = TakeDigits(text, 2);
    if (!minute) {
        return std::nullopt;
    }
    clock.hour = *hour;
    clock.minute = *minute;
    if (Take(text, ':')) {
        const std::optional<int> second = TakeDigits(text, 2);
        if (!second || (Take(text, '.') && !TakeFraction(text, clock.millisecond))) {
            return std::nullopt;
        }
        clock.second = *second;
    }
    if (clock.hour > 23 || clock.minute > 59 || clock.second > 59) {
        return std::nullopt;
    }
    return clock;
}

std::optional<std::chrono::year_month_day> TakeDate(std::string_view& text)
{
    const std::optional<int> year = TakeDigits(text, 4);
    if (!year || !Take(text, '-')) {
        return std::nullopt;
    }
    const std::optional<int> month = TakeDigits(text, 2);
    if (!month || !Take(text, '-')) {
        return std::nullopt;
    }
    const std::optional<int> day = TakeDigits(text, 2);
    if (!day) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(*year),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    return date.ok() ? std::optional(date) : std::nullopt;
}

std::optional<std::int64_t> FromLocal(std::tm local, int millisecond)
{
    local.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&local);
    if (seconds == static_cast<std::time_t>(-1)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(seconds) * kMsPerSecond + millisecond;
}

std::optional<std::int64_t> FromDate(const std::chrono::year_month_day& date, const Clock& clock,
                                     bool utc)
{
    if (utc) {
        const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
        const std::int64_t seconds =
            days * kSecondsPerDay + clock.hour * 3600LL + clock.minute * 60LL + clock.second;
        return seconds * kMsPerSecond + clock.millisecond;
    }
    std::tm local = {};
    local.tm_year = static_cast<int>(date.year()) - 1900;
    local.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    local.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    local.tm_hour = clock.hour;
    local.tm_min = clock.minute;
    local.tm_sec = clock.second;
    return FromLocal(local, clock.millisecond);
}

std::optional<std::int64_t> OfDay(std::int64_t nowMs, int daysAgo, const Clock& clock)
{
    const auto now = static_cast<std::time_t>(nowMs / kMsPerSecond);
    const std::tm* const found = std::localtime(&now); // NOLINT(concurrency-mt-unsafe): one thread
    if (found == nullptr) {
        return std::nullopt;
    }
    std::tm local = *found;
    local.tm_mday -= daysAgo;
    local.tm_hour = clock.hour;
    local.tm_min = clock.minute;
    local.tm_sec = clock.second;
    return FromLocal(local, clock.millisecond);
}

std::optional<std::int64_t> Ago(std::string_view text, std::int64_t nowMs)
{
    std::int64_t amount = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, amount);
    if (error != std::errc{} || rest + 1 != end || amount < 0) {
        return std::nullopt;
    }
    std::int64_t unit = 0;
    switch (*rest) {
    case 's':
        unit = 1;
        break;
    case 'm':
        unit = 60;
        break;
    case 'h':
        unit = 3600;
        break;
    case 'd':
        unit = kSecondsPerDay;
        break;
    default:
        return std::nullopt;
    }
    if (amount > kMostDays * kSecondsPerDay / unit) {
        return std::nullopt;
    }
    return nowMs - amount * unit * kMsPerSecond;
}

} // namespace

std::optional<std::string> IsoTime(std::int64_t timeMs)
{
    const std::chrono::milliseconds time(timeMs);
    const auto days = std::chrono::floor<std::chrono::days>(time);
    if (days.count() > kMostDays || days.count() < -kMostDays) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::sys_days(days)};
    const int year = static_cast<int>(date.year());
    if (year < 0 || year > 9999) {
        return std::nullopt;
    }
    const std::chrono::hh_mm_ss<std::chrono::milliseconds> clock(time - days);
    std::array<char, 64> text{};
    std::snprintf(
        text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", year,
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
        static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
    return text.data();
}

std::optional<std::int64_t> ParseMoment(std::string_view text, std::int64_t nowMs)
{
    if (text == "today" || text == "yesterday") {
        return OfDay(nowMs, text == "today" ? 0 : 1, {});
    }
    if (const std::optional<std::int64_t> ago = Ago(text, nowMs)) {
        return ago;
    }
    std::string_view rest = text;
    if (const std::optional<Clock> clock = TakeClock(rest)) {
        return rest.empty() ? OfDay(nowMs, 0, *clock) : std::nullopt;
    }
    rest = text;
    const auto date = TakeDate(rest);
    if (!date) {
        return std::nullopt;
    }
    Clock clock;
    if (Take(rest, 'T') || Take(rest, ' ')) {
        const std::optional<Clock> taken = TakeClock(rest);
        if (!taken) {
            return std::nullopt;
        }
        clock = *taken;
    }
    const bool utc = Take(rest, 'Z');
    return rest.empty() ? FromDate(*date, clock, utc) : std::nullopt;
}

std::string LocalTimeText(std::int64_t timeMs)
{
    const auto seconds = static_cast<std::time_t>(timeMs / 1000);
    std::tm parts{};
#if defined(_WIN32)
    const bool known = localtime_s(&parts, &seconds) == 0;
#else
    const bool known = localtime_r(&seconds, &parts) != nullptr;
#endif
    std::array<char, 64> text{};
    if (!known || std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts) == 0) {
        return "?";
    }
    return text.data();
}

std::int64_t NowMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

} // namespace vqrx::client::v0
