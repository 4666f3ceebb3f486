#include "ConsoleColour.h"
#include "LineOutput.h"
#include "StreamOutput.h"
#include "Utf8.h"

#include <windows.h>

namespace vqrx::client::v0 {
namespace {

// Writes UTF-16, so that the code page of the console does not matter.
class ConsoleOutput : public LineOutput {
public:
    ConsoleOutput(HANDLE console, bool coloured) noexcept
        : console_(console)
        , coloured_(coloured)
    {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        if (GetConsoleScreenBufferInfo(console_, &info) != FALSE) {
            before_ = info.wAttributes;
        }
    }

    ConsoleOutput(const ConsoleOutput&) = delete;
    ConsoleOutput& operator=(const ConsoleOutput&) = delete;
    ~ConsoleOutput() override { SetAttribute(before_); }

    void Write(int level, const std::string& utf8) override
    {
        SetAttribute(AttributeOfLevel(level, before_));
        const std::wstring line = Wide(utf8) + L"\r\n";
        DWORD written = 0;
        const BOOL done = WriteConsoleW(console_, line.data(), static_cast<DWORD>(line.size()),
                                        &written, nullptr);
        good_ = good_ && done != FALSE;
    }

    [[nodiscard]] bool Flush() override
    {
        SetAttribute(before_); // in case the program is interrupted before the next line
        return good_;
    }

private:
    void SetAttribute(WORD attribute) noexcept
    {
        if (coloured_) {
            SetConsoleTextAttribute(console_, attribute);
        }
    }

    HANDLE console_; // belongs to the process, never closed
    bool coloured_;
    bool good_ = true;
    WORD before_ = kGreyAttribute;
};

} // namespace

std::unique_ptr<LineOutput> MakeLineOutput(LineOutput::Colour colour)
{
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(output, &mode) != FALSE) {
        return std::make_unique<ConsoleOutput>(output, IsColoured(colour, true));
    }
    return std::make_unique<StreamOutput>(IsColoured(colour, false));
}

} // namespace vqrx::client::v0
