#include "SymbolNames.h"

#include <windows.h>

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

namespace vqrx::test::anomaly {
namespace {

constexpr WORD kFunction = 0x20; // as the type of a symbol

using Symbol = std::pair<std::uint32_t, std::string>; // offset in the program, name

template <typename T>
T ReadAt(const std::vector<char>& file, std::size_t position)
{
    T value{};
    if (position + sizeof value <= file.size()) {
        std::memcpy(&value, file.data() + position, sizeof value);
    }
    return value;
}

std::string NameOfSymbol(const std::vector<char>& file, const IMAGE_SYMBOL& symbol,
                         std::size_t names)
{
    if (symbol.N.Name.Short != 0) {
        const auto* const text = reinterpret_cast<const char*>(symbol.N.ShortName);
        return {text, strnlen(text, IMAGE_SIZEOF_SHORT_NAME)};
    }
    const std::size_t position = names + symbol.N.Name.Long;
    return position < file.size() ? file.data() + position : "";
}

// Reads the functions of the program from the table that the linker leaves in its file.
std::vector<Symbol> ReadSymbols()
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    // In one call: the program has many megabytes, and each run of a scenario reads it.
    std::vector<char> file(std::filesystem::file_size(path));
    std::ifstream(path, std::ios::binary)
        .read(file.data(), static_cast<std::streamsize>(file.size()));
    const auto header = static_cast<std::size_t>(ReadAt<IMAGE_DOS_HEADER>(file, 0).e_lfanew);
    const auto nt = ReadAt<IMAGE_NT_HEADERS>(file, header);
    const std::size_t sections =
        header + offsetof(IMAGE_NT_HEADERS, OptionalHeader) + nt.FileHeader.SizeOfOptionalHeader;
    const std::size_t table = nt.FileHeader.PointerToSymbolTable;
    const std::size_t count = nt.FileHeader.NumberOfSymbols;
    const std::size_t names = table + count * IMAGE_SIZEOF_SYMBOL;
    std::vector<Symbol> symbols;
    for (std::size_t index = 0; index < count; ++index) {
        const auto symbol = ReadAt<IMAGE_SYMBOL>(file, table + index * IMAGE_SIZEOF_SYMBOL);
        if (symbol.SectionNumber > 0 && symbol.Type == kFunction) {
            const auto section = ReadAt<IMAGE_SECTION_HEADER>(
                file, sections + static_cast<std::size_t>(symbol.SectionNumber - 1) *
                                     sizeof(IMAGE_SECTION_HEADER));
            symbols.emplace_back(section.VirtualAddress + symbol.Value,
                                 NameOfSymbol(file, symbol, names));
        }
        index += symbol.NumberOfAuxSymbols;
    }
    std::sort(symbols.begin(), symbols.end());
    return symbols;
}

void Remove(std::string& text, const std::string& part)
{
    for (std::size_t found = text.find(part); found != std::string::npos; found = text.find(part)) {
        text.erase(found, part.size());
    }
}

} // namespace

std::string LinkNameAt(std::uint32_t offset)
{
    static const std::vector<Symbol> symbols = ReadSymbols();
    auto after = std::upper_bound(
        symbols.begin(), symbols.end(), offset,
        [](std::uint32_t sought, const Symbol& symbol) { return sought < symbol.first; });
    return after == symbols.begin() ? std::string() : std::prev(after)->second;
}

std::string NameAt(std::uint32_t offset)
{
    const std::string linkName = LinkNameAt(offset);
    int status = 0;
    char* const plain = abi::__cxa_demangle(linkName.c_str(), nullptr, nullptr, &status);
    std::string name = status == 0 ? plain : linkName;
    std::free(plain);
    for (const char* part : {"(anonymous namespace)::", "vqrx::", "system::daemon::", "test::",
                             "std::__cxx11::", "::v0", "::v1", "::v2"}) {
        Remove(name, part);
    }
    return name.substr(0, name.find('('));
}

std::string NamesOf(const std::uint32_t* offsets, std::size_t count)
{
    std::string text;
    for (std::size_t index = 0; index < count; ++index) {
        // A return address lies after its call, which may be the last instruction of a function.
        text += "    at " + NameAt(offsets[index] - 1) + "\n";
    }
    return text;
}

} // namespace vqrx::test::anomaly
