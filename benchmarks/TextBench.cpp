// Conversion from UTF-16 to UTF-8, compared with the converter of the system, which is called
// twice: for the size and for the text.
#include "Measure.h"
#include "utf/Transcode.h"

#include <string>

#include <windows.h>

namespace vqrx::bench {
namespace {

std::wstring Mixed(std::size_t units)
{
    const std::wstring piece = L"D:\\FIRMWARE\\App\\Gerät-07\\канал "
                               L"オ 😀 encoder_channel.exe --profile=broadcast "; // mostly ASCII
    std::wstring text;
    while (text.size() + piece.size() <= units) {
        text += piece;
    }
    return text;
}

std::string BySystem(const std::wstring& text)
{
    const int length = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), bytes, nullptr, nullptr);
    return result;
}

template <typename Convert>
void Time(const std::string& name, const std::wstring& text, int times, const Convert& convert)
{
    convert(text);
    const Stopwatch watch;
    for (int i = 0; i < times; ++i) {
        const std::string converted = convert(text);
        Keep(converted);
    }
    Report(name, watch.Seconds() / times * 1e6);
}

} // namespace

void TextBench(const Settings& settings)
{
    const std::wstring mebibyte = Mixed(512 * 1024);
    const int times = settings.quick ? 5 : 40;
    Time("utf8.mixed_1mib_us.system", mebibyte, times, BySystem);
    Time("utf8.mixed_1mib_us.ours", mebibyte, times, encoding::utf::v1::WideToUtf8);
    const std::wstring ascii(512 * 1024, L'x');
    Time("utf8.ascii_1mib_us.system", ascii, times, BySystem);
    Time("utf8.ascii_1mib_us.ours", ascii, times, encoding::utf::v1::WideToUtf8);
    const std::wstring name = L"encoder_channel_07.exe";
    Time("utf8.name_us.system", name, 20000, BySystem);
    Time("utf8.name_us.ours", name, 20000, encoding::utf::v1::WideToUtf8);
}

} // namespace vqrx::bench
