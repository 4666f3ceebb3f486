#include "log_perf/ConsoleSink.h"

#include <array>
#include <iostream>
#include <string>

#include <windows.h>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::sync_ptr::v1::CriticalSectionHold;

constexpr WORD kGrey = 7; // the console's default

// Bright red, bright yellow, grey, bright green: FOREGROUND_* values of wincon.h.
constexpr std::array<WORD, 4> kLevelColours = {12, 14, kGrey, 10};

WORD ColourOf(int level) noexcept
{
    const auto index = static_cast<std::size_t>(level);
    return level >= 0 && index < kLevelColours.size() ? kLevelColours[index] : kGrey;
}

void SetColour(WORD attribute) noexcept
{
    SetConsoleTextAttribute(GetStdHandle(STD_OUTPUT_HANDLE), attribute);
}

} // namespace

ConsoleSink::ConsoleSink() = default;

ConsoleSink::~ConsoleSink()
{
    SetColour(kGrey);
}

void ConsoleSink::SetThreshold(int level) noexcept
{
    const CriticalSectionHold hold(lock_);
    threshold_ = level;
}

void ConsoleSink::Write(int level, const Timestamp* timestamp, const char* text)
{
    {
        const CriticalSectionHold hold(lock_);
        if (level > threshold_) {
            return;
        }
    }
    // Not restored after the line: the next one sets its own, the destructor the last.
    SetColour(ColourOf(level));
    std::cerr.clear(); // a line that could not be written does not silence the later ones
    // In one piece: the stream is flushed after every piece, and a console redraws for each.
    std::string line(dateText_.Of(*timestamp));
    line.append(1, ' ').append(text).append(1, '\n');
    std::cerr << line << std::flush;
}

} // namespace vqrx::log::log_perf::v2
