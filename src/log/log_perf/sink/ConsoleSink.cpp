#include "log_perf/sink/ConsoleSink.h"

#include <array>
#include <iostream>
#include <string>

#include <windows.h>

namespace vqrx::log::log_perf::v2 {
namespace {

constexpr WORD kGrey = 7; // the console's default

// Console attributes by level: bright red, bright yellow, grey, bright green (FOREGROUND_* values
// of wincon.h).
constexpr std::array<WORD, 4> kLevelColours = {12, 14, kGrey, 10};

WORD ColourOf(int level) noexcept
{
    const auto index = static_cast<std::size_t>(level);
    return level >= 0 && index < kLevelColours.size() ? kLevelColours[index] : kGrey;
}

// The text goes to standard error. On a console both streams are the same screen.
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
    const auto threshold = threshold_.Lock();
    *threshold = level;
}

void ConsoleSink::Write(int level, const Timestamp* timestamp, const char* text)
{
    {
        const auto threshold = threshold_.Lock();
        if (level > *threshold) {
            return;
        }
    }
    // The colour stays after the line: the next line sets its own, and the destructor sets grey.
    SetColour(ColourOf(level));
    std::cerr.clear(); // the stream fails after an error; this line is tried all the same
    // One write per line: the stream is flushed after each write, and a console redraws each time.
    std::string line(dateText_.Of(*timestamp));
    line.append(1, ' ').append(text).append(1, '\n');
    std::cerr << line << std::flush;
}

} // namespace vqrx::log::log_perf::v2
