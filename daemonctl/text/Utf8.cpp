#include "Utf8.h"

#include "code_page/CodePage.h"
#include "win32/LocalMemory.h"

#include <windows.h>

#include <shellapi.h>

namespace vqrx::client::v0 {

using system::code_page::v1::NarrowToWide;
using system::code_page::v1::WideToNarrow;

std::wstring Wide(std::string_view utf8)
{
    return NarrowToWide(utf8, CP_UTF8);
}

std::vector<std::wstring> Wide(const std::vector<std::string>& utf8)
{
    std::vector<std::wstring> result;
    result.reserve(utf8.size());
    for (const std::string& text : utf8) {
        result.push_back(Wide(text));
    }
    return result;
}

std::string Utf8(std::wstring_view wide)
{
    return WideToNarrow(wide, CP_UTF8);
}

std::vector<std::string> Utf8Arguments()
{
    int count = 0;
    const system::win32::v1::UniqueLocalMemory<wchar_t*> split(
        CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int index = 0; split && index < count; ++index) {
        arguments.push_back(Utf8(split.get()[index]));
    }
    return arguments;
}

} // namespace vqrx::client::v0
