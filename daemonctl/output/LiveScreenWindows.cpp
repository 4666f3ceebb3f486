#include "ConsoleColour.h"
#include "LiveScreen.h"
#include "StreamOutput.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

std::optional<ConsoleSize> SizeOfBuffer(HANDLE buffer)
{
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (GetConsoleScreenBufferInfo(buffer, &info) == FALSE) {
        return std::nullopt;
    }
    return ConsoleSize{static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1),
                       static_cast<std::size_t>(info.srWindow.Bottom - info.srWindow.Top + 1)};
}

WORD AttributeOf(const LiveLine& line, bool coloured)
{
    const WORD attribute = coloured ? AttributeOfLevel(line.level, kGreyAttribute) : kGreyAttribute;
    constexpr unsigned background = 4; // bits to the left
    return line.marked ? static_cast<WORD>((attribute & 0x7U) << background) : attribute;
}

class ConsoleScreen : public LiveScreen {
public:
    ConsoleScreen(system::win32::v1::UniqueKernelHandle before,
                  system::win32::v1::UniqueKernelHandle buffer, bool coloured)
        : before_(std::move(before))
        , buffer_(std::move(buffer))
        , coloured_(coloured)
    {
        CONSOLE_CURSOR_INFO hidden = {1, FALSE};
        SetConsoleCursorInfo(buffer_.Get(), &hidden);
        SetConsoleActiveScreenBuffer(buffer_.Get());
    }

    ConsoleScreen(const ConsoleScreen&) = delete;
    ConsoleScreen& operator=(const ConsoleScreen&) = delete;
    ~ConsoleScreen() override { SetConsoleActiveScreenBuffer(before_.Get()); }

    [[nodiscard]] ConsoleSize Size() const override
    {
        return SizeOfBuffer(buffer_.Get()).value_or(ConsoleSize{1, 1});
    }

    void Show(const std::vector<LiveLine>& lines) override
    {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        if (GetConsoleScreenBufferInfo(buffer_.Get(), &info) == FALSE) {
            return;
        }
        const ConsoleSize size = Size();
        CHAR_INFO blank = {};
        blank.Char.UnicodeChar = L' ';
        blank.Attributes = kGreyAttribute;
        std::vector<CHAR_INFO> cells(size.width * size.height, blank);
        for (std::size_t row = 0; row < std::min(lines.size(), size.height); ++row) {
            const std::wstring text = Wide(lines[row].text);
            for (std::size_t column = 0; column < size.width; ++column) {
                CHAR_INFO& cell = cells[row * size.width + column];
                cell.Char.UnicodeChar = column < text.size() ? text[column] : L' ';
                cell.Attributes = AttributeOf(lines[row], coloured_);
            }
        }
        SMALL_RECT region = info.srWindow;
        WriteConsoleOutputW(buffer_.Get(), cells.data(),
                            {static_cast<SHORT>(size.width), static_cast<SHORT>(size.height)},
                            {0, 0}, &region);
    }

private:
    system::win32::v1::UniqueKernelHandle before_; // what the console showed before
    system::win32::v1::UniqueKernelHandle buffer_;
    bool coloured_;
};

} // namespace

std::optional<ConsoleSize> SizeOfConsole()
{
    return SizeOfBuffer(GetStdHandle(STD_OUTPUT_HANDLE));
}

std::unique_ptr<LiveScreen> MakeLiveScreen(LineOutput::Colour colour)
{
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (!SizeOfBuffer(output)) {
        return nullptr;
    }
    // Not the standard output: under Wine that stands for whichever buffer is shown.
    system::win32::v1::UniqueKernelHandle before(
        CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_EXISTING, 0, nullptr));
    system::win32::v1::UniqueKernelHandle buffer(
        CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, CONSOLE_TEXTMODE_BUFFER, nullptr));
    if (!before || !buffer) {
        return nullptr;
    }
    return std::make_unique<ConsoleScreen>(std::move(before), std::move(buffer),
                                           IsColoured(colour, true));
}

} // namespace vqrx::client::v0
