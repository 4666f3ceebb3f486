// Writes the exact command line it got, in UTF-8, into the file that its first argument names
// (".part" until it is complete), and runs on.
#include "ChildProgram.h"

#include <shellapi.h>

#include <fstream>

namespace {

std::string Utf8(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
    result.pop_back();
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string file = vqrx::test::Argument(argc, argv, 1);
    const std::string part = file + ".part";
    std::ofstream(part, std::ios::binary) << Utf8(GetCommandLineW());
    MoveFileExA(part.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING);
    Sleep(INFINITE);
}
