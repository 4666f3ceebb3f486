// Child program that writes a line of each level through the console sink and then reads the text
// and the colours of the console. Exit code 0: all is right. 1 to 4: the line of level 0 to 3 is
// wrong. 5: the next text would have a wrong colour. 6: the sink did not restore the colour.
#include "log_perf/sink/ConsoleSink.h"

#include <windows.h>

#include <string>

namespace {

using vqrx::log::log_perf::v2::ConsoleSink;
using vqrx::log::log_perf::v2::Timestamp;

const char* const kTexts[] = {"error", "warning", "information", "detail"};
const WORD kColours[] = {12, 14, 7, 10};
constexpr int kPrefixLength = 24; // "Mon Nov 16 03:52:36.123 "

[[nodiscard]] bool LineIsRight(HANDLE screen, int level)
{
    const std::string text = kTexts[level];
    const auto length = static_cast<DWORD>(kPrefixLength + text.size());
    std::string shown(length, ' ');
    WORD colours[64] = {};
    const COORD start = {0, static_cast<SHORT>(level)};
    DWORD count = 0;
    if (ReadConsoleOutputCharacterA(screen, shown.data(), length, start, &count) == FALSE ||
        ReadConsoleOutputAttribute(screen, colours, length, start, &count) == FALSE) {
        return false;
    }
    for (DWORD column = 0; column < length; ++column) {
        if (colours[column] != kColours[level]) {
            return false;
        }
    }
    return shown.substr(kPrefixLength) == text && shown.substr(19, 5) == ".007 ";
}

WORD ColourOfTheNextText(HANDLE screen)
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    GetConsoleScreenBufferInfo(screen, &info);
    return info.wAttributes;
}

} // namespace

int main()
{
    const HANDLE screen = GetStdHandle(STD_OUTPUT_HANDLE);
    {
        ConsoleSink sink;
        sink.SetThreshold(3);
        Timestamp timestamp{};
        timestamp.time = 1795236736;
        timestamp.millitm = 7;
        for (int level = 0; level < 4; ++level) {
            sink.Write(level, &timestamp, kTexts[level]);
        }
        for (int level = 0; level < 4; ++level) {
            if (!LineIsRight(screen, level)) {
                return 1 + level;
            }
        }
        if (ColourOfTheNextText(screen) != kColours[3]) {
            return 5;
        }
    }
    return ColourOfTheNextText(screen) == 7 ? 0 : 6;
}
